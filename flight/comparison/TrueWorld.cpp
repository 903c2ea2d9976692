// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/comparison/TrueWorld.h"

#include <fmt/format.h>

#include "flight/simulation/SensorChain.h"
#include "flight/strips/ParallelLoop.h"
#include "platform/tessaly/PolarCoordinates.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights::Comparison {
namespace {

using Eigen::Vector3d;
using Geomra::PhysicalSpace::point;

/// q' = (1 + c) q + o on the polar form.
point corrected(const point& scanner, const Simulation::MountingValues& mounting) {
  const point q = Tessaly::polarCoordinatesFromCartesian(scanner);
  const Vector3d real =
      Vector3d(q.x, q.y, q.z).cwiseProduct(Vector3d::Ones() + mounting.scales) + mounting.offsets;
  return Tessaly::cartesianCoordinatesFromPolar({real[0], real[1], real[2]});
}

void checkTimes(const TrueStrip& strip, const Velorn::Trajectory& trajectory, unsigned int week,
                const std::vector<double>& times) {
  for (const double time : times) {
    if (trajectory.recordsAbout(time, week)) continue;
    throw Error(fmt::format("{}: the trajectory of the flight does not cover the time {} s",
                            strip.file.string(), time));
  }
}

}  // namespace

Points trueWorld(const Truth& truth, const Velorn::Trajectory& trajectory, std::size_t strip,
                 const Points& scanner, const std::vector<double>& times) {
  const TrueStrip& known = truth.strips.at(strip);
  checkTimes(known, trajectory, truth.week, times);
  const auto projection = trajectory.getMercator();
  Points world(scanner.size());
  forEachInParallel(0, scanner.size(), 1024, [&](std::size_t i) {
    Simulation::Pose pose;
    trajectory.interpolateTrajectory(times[i], truth.week, pose.position, pose.attitude, false);
    const Simulation::Beams beams(known.errors.added(pose, times[i], 1.0), truth.real.misalignment,
                                  truth.real.leverArm, projection);
    world[i] = beams.world(corrected(scanner[i], truth.real));
  });
  return world;
}

}  // namespace Velorn::Flights::Comparison
