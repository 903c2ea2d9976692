// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The same defaults for points a few centimetres apart, where they are as far apart as they are
// noisy, and for points a metre and a half apart.
#include <gtest/gtest.h>

#include "platform/morvane/Console.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Compare.h>
#include <velorn/flight/Flight.h>
#include <velorn/flight/Simulate.h>

using namespace Velorn::Flights;

namespace {

struct Scene {
  const char* name;
  double height, speed, length, terrainScale;  ///< as in the simulation
  std::uint64_t points;
  double low, high;             ///< bounds of the points' spacing [m]
  double horizontal, vertical;  ///< largest RMS errors of all points [m]
};

class PointDensity : public testing::TestWithParam<Scene> {};

TEST_P(PointDensity, IsNothingThatAUserHasToSet) {
  const Scene& scene = GetParam();
  const TemporaryFolder folder;
  SimulationSettings simulated;
  simulated.strips = 2;
  simulated.height = scene.height;
  simulated.speed = scene.speed;
  simulated.length = scene.length;
  simulated.terrainScale = scene.terrainScale;
  simulated.points = scene.points;
  simulate(folder.path(), simulated, false, {});

  FlightSettings settings;
  settings.strips = {folder / "strip_*.kx"};
  settings.trajectories = {folder / "trajectory.kx"};
  settings.groundTruth = folder / "ground_truth.kx";
  settings.configuration().RootPath = folder / "run";
  settings.configuration().TypeModel = "BIAS";  // the strips last seconds
  settings.match.maxCorrespondences = 8000;
  settings.rounds = 3;
  settings.stability = false;
  const Morvane::ConsoleRedirection silence([](std::string_view) {});
  const RunReport run = Flight(settings, {}).run();
  ASSERT_TRUE(run.scale);
  EXPECT_GT(run.scale->spacing, scene.low);
  EXPECT_LT(run.scale->spacing, scene.high);
  EXPECT_EQ(run.rounds.front().scale, 1.0) << "no coarse round is needed";
  EXPECT_GT(run.rounds.back().matching->correspondences, 6000U);
  const ErrorRow all = compare(folder.path(), folder / "run", {}, {}).world.kinds.front();
  EXPECT_GT(all.before.rms.horizontal, 5.0 * all.after.rms.horizontal);
  EXPECT_LT(all.after.rms.horizontal, scene.horizontal);
  EXPECT_LT(all.after.rms.vertical, scene.vertical);
}

// Bounds are twice what was measured.
INSTANTIATE_TEST_SUITE_P(
    Flights, PointDensity,
    testing::Values(Scene{"drone", 10, 5, 30, 0.07, 400'000, 0.03, 0.06, 0.012, 0.0025},
                    Scene{"aircraft", 400, 50, 500, 1, 300'000, 1.2, 2.5, 0.03, 0.01}),
    [](const auto& scene) { return scene.param.name; });

}  // namespace
