// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A simulated flight adjusted by the library, and where its points then lie.
#pragma once

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <omp.h>

#include "platform/plome/StringList.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include <velorn/CeresOptimization.h>
#include <velorn/Georeferencing.h>
#include <velorn/flight/Adjust.h>

/// Sums of squares over points of a flight, or their root means [m].
struct WorldError {
  double horizontal = 0, vertical = 0;
  std::size_t count = 0;

  void add(const std::vector<Geomra::PhysicalSpace::point>& found,
           const std::vector<Geomra::PhysicalSpace::point>& truth) {
    ASSERT_EQ(found.size(), truth.size());
    for (std::size_t k = 0; k < found.size(); ++k) {
      const auto d = found[k] - truth[k];
      horizontal += d.x * d.x + d.y * d.y;
      vertical += d.z * d.z;
    }
    count += found.size();
  }
  WorldError rms() const {
    const auto n = static_cast<double>(count);
    return {std::sqrt(horizontal / n), std::sqrt(vertical / n), count};
  }
};

/// The adjustment of a simulated flight, in its own folder.
inline Velorn::Flights::AdjustmentInput inputOf(const std::filesystem::path& folder) {
  Velorn::Flights::AdjustmentInput input;
  input.strips = stripsIn(folder);
  input.trajectories = {folder / "trajectory.kx"};
  input.groundTruth = folder / "ground_truth.kx";
  input.correspondences = folder / "03_correspondences";
  input.configuration.RootPath = folder;
  return input;
}

/// The library's own objects of one adjustment.
struct Library {
  explicit Library(const Velorn::Flights::AdjustmentInput& input)
      : configuration(input.configuration) {
    const auto strips = std::make_shared<Plome::StringList>();
    for (const auto& strip : input.strips) strips->add(strip.string());
    Velorn::Flights::orFail(
        files.add(strips, input.groundTruth.string(), input.trajectories[0].string()));
    trajectory = Velorn::Trajectory(files.getTrajectories());
    Velorn::Flights::orFail(trajectory.importTrajectory());
    std::filesystem::create_directories(configuration.RootPath / "00_parameter");
    parameters = {files.getStripFiles(), configuration};
    Velorn::Flights::orFail(parameters.setSections(
        configuration.TypeModel, {}, trajectory.getLeverarm(), trajectory.getMisalignment(),
        "_test.txt", configuration.OverwriteToLinear, configuration.OverwriteToSpline));
  }

  std::string run() {
    const int before = omp_get_max_threads();
    omp_set_num_threads(std::max(2, before));
    auto fault = optimization.run();
    omp_set_num_threads(before);
    return fault;
  }

  /// Of all measurements under the unknowns as they are now.
  WorldError worldError(const std::filesystem::path& folder) const {
    WorldError error;
    const auto strips = files.getStripFiles();
    for (unsigned i = 0; i < strips.size(); ++i) {
      const OneGridFile strip(strips[i]);
      const auto scanner =
          strip.column<Geomra::PhysicalSpace::point>(Strandel::scannerChartName, "Positions");
      const auto times = strip.column<double>(Strandel::scannerChartName, "GPSTime");
      std::vector<Geomra::PhysicalSpace::point> world(scanner.size());
      std::vector<Geomra::PhysicalSpace::vector> directions(scanner.size());
      Velorn::Flights::orFail(Velorn::scanner2world(parameters, trajectory, scanner, times,
                                                    trajectory.timeRanges().begin()->first, i,
                                                    world, directions, 0.0, false));
      error.add(world,
                surfacesOf(folder, strips[i]).world<Geomra::PhysicalSpace::point>("Positions"));
    }
    return error.rms();
  }

  Velorn::InputParameter configuration;
  Velorn::FileContainer files;
  Velorn::Trajectory trajectory{{}};
  Velorn::SolverParameters parameters;
  Velorn::CeresOptimization optimization{parameters, trajectory, configuration, files};
};
