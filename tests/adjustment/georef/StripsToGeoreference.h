// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Strips of a short flight for the tests of their georeferencing.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/SmallStrip.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/Georeferencing.h>

/// A folder with a trajectory, one for outputs, and what the console is told.
class StripsToGeoreference : public testing::Test {
 protected:
  using point = Geomra::PhysicalSpace::point;
  using vector = Geomra::PhysicalSpace::vector;

  StripsToGeoreference() {
    std::filesystem::create_directory(folder / "out");
    if (!trajectory.importTrajectory().empty()) throw std::runtime_error("no trajectory");
    parameters = parametersOf(2);
  }

  /// Ten seconds of week 2318.
  std::filesystem::path saveTrajectory() const {
    std::vector<Record> records;
    for (int i = 0; i <= 20; ++i) {
      const double t = 0.5 * i;
      records.push_back({1000 + t, {5e5 + 50 * t, 5.3e6 + 10 * t, 1000 + t}, {1 + t, 2 - t, 78}});
    }
    return TrajectoryFile({records}).save(folder / "trajectory.kx");
  }

  /// A strip with everything a container may hold, of 60 and 30 points that were measured in
  /// these ten seconds.
  static Strandel::Bundle measuredStrip() {
    auto bundle = smallStrip(60);
    for (std::uint32_t fragment : {0U, 1U}) {
      const auto scanner = scannerChart(bundle);
      std::vector<double> times;
      std::vector<point> points;
      for (int i = 0; i < (fragment == 0 ? 60 : 30); ++i) {
        times.push_back(1000.5 + 0.1 * i + 3 * fragment);
        points.push_back({900.0 + i % 7, 3.0 * fragment, 10.0 * (i % 30) - 150});
      }
      scanner->field("GPSTime")->setValues<double>({fragment}, std::move(times));
      scanner->field("Positions")->setValues<point>({fragment}, std::move(points));
    }
    return bundle;
  }

  static Strandel::GridPtr grid(const Strandel::Bundle& bundle) { return bundle.grids().front(); }
  static Strandel::ChartPtr scannerChart(const Strandel::Bundle& bundle) {
    return grid(bundle)->chart(Strandel::scannerChartName);
  }
  static Strandel::ChartPtr worldChart(const Strandel::Bundle& bundle) {
    return grid(bundle)->cartesian();
  }

  std::string save(Strandel::Bundle& bundle, const std::string& name = "a.kx") const {
    const auto fault = Strandel::MyStorage(0, 0, 1, 1).save(bundle, folder / name, "wd");
    if (!fault.empty()) throw std::runtime_error(fault);
    return (folder / name).string();
  }

  static Strandel::Bundle load(const std::filesystem::path& path) {
    Strandel::Bundle bundle;
    const auto fault = Strandel::MyStorage(0, 0, 1, 1).load(path, bundle);
    if (!fault.empty()) throw std::runtime_error(fault);
    return bundle;
  }

  template <typename T>
  static std::vector<T> valuesOf(const Strandel::ChartPtr& chart, const std::string& field,
                                 std::uint32_t fragment) {
    const auto read = chart->field(field)->values<T>({fragment});
    if (!read) throw std::runtime_error(read.error);
    return *read.values;
  }

  /// Parameters of `strips` strips without corrections, with the trajectory's mounting.
  Velorn::SolverParameters parametersOf(std::size_t strips) const {
    Velorn::SolverParameters made(std::vector<std::filesystem::path>(strips, "strip.kx"), {});
    const auto fault = made.readSectionsAndParameter("", "", trajectory.getLeverarm(),
                                                     trajectory.getMisalignment());
    if (!fault.empty()) throw std::runtime_error(fault);
    return made;
  }

  /// What the operation on lists of points makes of one fragment of strip 0.
  struct Georeferenced {
    std::string message;
    std::vector<point> world;
    std::vector<vector> directions;
  };
  Georeferenced expected(const Strandel::Bundle& bundle, std::uint32_t fragment,
                         double directionLength) const {
    const auto points = valuesOf<point>(scannerChart(bundle), "Positions", fragment);
    const auto times = valuesOf<double>(scannerChart(bundle), "GPSTime", fragment);
    Georeferenced made{{}, std::vector<point>(points.size()), std::vector<vector>(points.size())};
    made.message = Velorn::scanner2world(parameters, trajectory, points, times, 2318, 0, made.world,
                                         made.directions, directionLength, false);
    return made;
  }

  /// Content without the named fields, which are written <chart>/<field>.
  static std::string contentWithout(
      const Strandel::Bundle& bundle,
      const std::vector<std::pair<std::string, std::string>>& fields) {
    for (const auto& [chart, field] : fields) grid(bundle)->chart(chart)->removeField(field);
    return intactContentOf(bundle);
  }

  /// Strip 0 of the parameters.
  std::string georeference(const std::string& file, const std::string& outputFolder,
                           bool inverse = false, int storageMode = 0) const {
    return Velorn::scanner2world(parameters, trajectory, file, 0, outputFolder, inverse,
                                 storageMode, false);
  }

  std::string cannotLoad(const std::string& file) const {
    return "scanner2world: can not load " + file + " (EnableExternalFile!) \n";
  }

  std::size_t filesInFolder() const {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::recursive_directory_iterator(folder.path()), {}));
  }

  TemporaryFolder folder;
  ConsoleLines console;
  Velorn::Trajectory trajectory{{saveTrajectory()}};
  Velorn::SolverParameters parameters;
  std::string out = (folder / "out").string();
  std::filesystem::path errorFile = folder / "out/ERROR_SCANNER2WORLD_a.txt";
  std::filesystem::path output = folder / "out/a_SA.kx";
};
