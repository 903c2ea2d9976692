// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A host that makes correspondences of its own, and adjusts them: two opposite strips see the same
// places on planes under a misalignment that the delivered trajectory does not know.
//
//     memory OUTPUT
#include <cmath>
#include <filesystem>
#include <iostream>

#include <velorn/CorrespondenceBlock.h>
#include <velorn/Georeferencing.h>
#include <velorn/flight/Adjust.h>
#include <velorn/flight/Containers.h>
#include <velorn/flight/Error.h>

namespace fs = std::filesystem;
using namespace Velorn::Flights;
using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;

namespace {

const point known{0.1, -0.05, 0.2};  // misalignment: roll, pitch, yaw [degree]

/// Eastward from 1000 s on, and back from 1100 s on, 30 m/s at 600 m.
fs::path trajectory(const fs::path& file, const point& misalignment) {
  TrajectoryColumns columns;
  columns.week = 2318;
  columns.epsgSpatial = 32632;
  columns.epsgHeight = 4979;
  columns.misalignment = misalignment;
  for (int k = 0; k <= 1600; ++k) {
    const double t = 0.1 * k;
    const bool isBack = t > 80.0;
    columns.times.push_back(990.0 + t);
    columns.positions.push_back(
        {500e3 + (isBack ? 3600.0 - 30.0 * (t - 10.0) : 30.0 * t), 5e6, 600});
    columns.roll.push_back(0.0);
    columns.pitch.push_back(0.0);
    columns.yaw.push_back(isBack ? 270.0 : 90.0);
  }
  saveTrajectory(file, columns);
  return file;
}

/// Measurements of world points under the trajectory's own mounting.
StripColumns measured(const fs::path& file, const Points& world, double begin, double step) {
  Velorn::Trajectory truth({file});
  Velorn::SolverParameters mounting(std::vector<fs::path>{"strip"}, {});
  std::string fault = truth.importTrajectory();
  if (fault.empty())
    fault = mounting.setEmptySections(truth.getLeverarm(), truth.getMisalignment());
  StripColumns strip;
  strip.week = 2318;
  strip.world = strip.scanner = world;
  for (std::size_t k = 0; k < world.size(); ++k) {
    strip.times.push_back(begin + step * static_cast<double>(k));
  }
  if (fault.empty()) {
    fault = world2scanner(mounting, truth, strip.scanner, strip.times, 2318, 0, world);
  }
  if (!fault.empty()) throw Error(fault);
  return strip;
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 2) return 2;
  const fs::path folder = arguments[1];
  fs::create_directories(folder / "blocks");
  const vector normals[] = {
      {0.6, 0, 0.8}, {-0.6, 0, 0.8}, {0, 0.6, 0.8}, {0, -0.6, 0.8}, {0, 0, 1}};
  Points world;
  for (int k = 0; k < 1000; ++k) {
    world.push_back({500e3 + 300 + 1.5 * k, 5e6 + 250 * std::sin(0.7 * k), 20 * std::sin(0.3 * k)});
  }
  const auto truth = trajectory(folder / "truth.kx", known);
  const StripColumns strips[] = {measured(truth, world, 1000.0, 0.05),
                                 measured(truth, world, 1145.0, -0.05)};
  AdjustmentInput input;
  Velorn::CorrespondenceBlock block(folder / "blocks/c0_1.kx", false, 2318, 2318,
                                    input.configuration.Storage);
  for (std::size_t k = 0; k < world.size(); ++k) {
    const auto& n = normals[k % 5];
    const auto being = [&](const StripColumns& s) {
      return Velorn::SphericalBeing(s.world[k], s.scanner[k], s.times[k], n, {0, 0, 1}, 12);
    };
    block.add(being(strips[0]), being(strips[1]));
  }
  if (const auto fault = block.save(); !fault.empty()) throw Error(fault);
  for (const char* name : {"a.kx", "b.kx"}) {
    input.strips.push_back(folder / name);
    saveStrip(input.strips.back(), strips[input.strips.size() - 1]);
  }
  input.groundTruth = folder / "none.kx";
  saveGroundTruth(input.groundTruth, {});
  input.trajectories = {trajectory(folder / "delivered.kx", {})};
  input.correspondences = folder / "blocks";
  input.configuration.RootPath = folder;
  input.configuration.LockedStrips = {0, 1};
  input.settings.fewestGroundTruth = 0;
  input.settings.estimateOffsets = input.settings.estimateScales = false;
  input.settings.estimateLeverArm = false;
  const auto report = adjust(input, {});
  requireConvergence(report.solver, "raise the number of iterations");
  const auto& found = report.globals.misalignment;
  std::cout << textOf(report, false) << "misalignment " << found[0] << ' ' << found[1] << ' '
            << found[2] << " degrees\n";
  const auto differs = [](double a, double b) { return !(std::abs(a - b) < 1e-4); };
  return differs(found[0], known.x) || differs(found[1], known.y) || differs(found[2], known.z);
} catch (const Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
