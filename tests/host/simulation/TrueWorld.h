// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// World points of a synthetic flight under its truth, computed anew from its files.
#pragma once

#include <Eigen/Core>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "host/simulation/SensorChain.h"
#include "platform/tessaly/PolarCoordinates.h"
#include "tests/host/simulation/SimulatedFlight.h"
#include <velorn/Trajectory.h>

inline constexpr double degree = std::numbers::pi / 180.0;

inline Eigen::Vector3d listed(const nlohmann::json& three) {
  return {three[0].get<double>(), three[1].get<double>(), three[2].get<double>()};
}

/// A correction of truth.json, in its own unit.
inline Geomra::PhysicalSpace::vector correctionAt(const nlohmann::json& c, double dt) {
  Eigen::Vector3d sum = listed(c["constant"]) + dt * listed(c["linear"]);
  for (int j = 0; j < 3; ++j) {
    const double turns = dt / listed(c["sine"]["period"])[j];
    sum[j] += listed(c["sine"]["amplitude"])[j] *
              std::sin(2.0 * std::numbers::pi * turns + listed(c["sine"]["phase"])[j]);
  }
  return {sum[0], sum[1], sum[2]};
}

/// The delivered trajectory, as the library reads and interpolates it.
inline Velorn::Trajectory trajectoryIn(const std::filesystem::path& folder) {
  Velorn::Trajectory trajectory({folder / "trajectory.kx"});
  orFail(trajectory.importTrajectory());
  return trajectory;
}

/// World points under the truth, from nothing but the files: delivered trajectory and scanner
/// coordinates, and the corrections that truth.json lists.
inline std::vector<Geomra::PhysicalSpace::point> trueWorld(const std::filesystem::path& folder,
                                                           const nlohmann::json& truth,
                                                           std::size_t strip) {
  using Eigen::Vector3d;
  using Geomra::PhysicalSpace::point;
  using nlohmann::json;
  constexpr const char* scannerChart = Strandel::scannerChartName;
  const json& globals = truth["globals"];
  const auto in = [&](const char* name) { return listed(globals[name]["true"]); };
  const Vector3d unit(1.0, degree, degree);
  const Vector3d offsets = in("offsets").cwiseProduct(unit), scales = in("scales");
  const auto trajectory = trajectoryIn(folder);
  const OneGridFile file(stripsIn(folder)[strip]);
  const auto times = file.column<double>(scannerChart, "GPSTime");
  const auto scanner = file.column<point>(scannerChart, "Positions");
  const json& errors = truth["strips"][strip];
  std::vector<point> world;
  for (std::size_t i = 0; i < times.size(); ++i) {
    Simulation::Pose pose;
    EXPECT_TRUE(trajectory.interpolateTrajectory(times[i], truth["week"], pose.position,
                                                 pose.attitude, true));
    const double dt = times[i] - errors["firstTime"].get<double>();
    pose.position = pose.position + correctionAt(errors["position"], dt);
    pose.attitude = pose.attitude + degree * correctionAt(errors["attitude"], dt);
    const point q = Tessaly::polarCoordinatesFromCartesian(scanner[i]);
    const Vector3d real = Vector3d(q.x, q.y, q.z).cwiseProduct(Vector3d::Ones() + scales) + offsets;
    const Simulation::Beams beams(pose, degree * in("misalignment"), in("leverArm"),
                                  trajectory.getMercator());
    world.push_back(
        beams.world(Tessaly::cartesianCoordinatesFromPolar({real[0], real[1], real[2]})));
  }
  return world;
}
