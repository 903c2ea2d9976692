// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/TrueFlight.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/geomra/Degree.h"

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

constexpr vector wind{3.0, -2.0, 0.0};  // blows towards, in the projection [m/s]
constexpr double meanPitch = 1.5 * degree;
constexpr double steepestBank = 25.0 * degree;

/// Bank angle of a coordinated turn, to the right positive, softly limited [rad].
double bankOf(const Kinematics& way) {
  constexpr double gravity = 9.81;
  const vector &v = way.velocity, &a = way.acceleration;
  const double speed = std::hypot(v.x, v.y);
  const double rightwards = (a.x * v.y - a.y * v.x) / speed;
  return steepestBank * std::tanh(std::atan(rightwards / gravity) / steepestBank);
}

/// Direction in which the aircraft points, clockwise from grid north [rad].
double headingInGrid(const vector& overGround) {
  const vector throughAir = overGround - wind;
  return std::atan2(throughAir.x, throughAir.y);
}

/// The angle nearest to another one that differs from the given one by whole turns.
double unwrapped(double angle, double near) {
  constexpr double turn = 2.0 * std::numbers::pi;
  return angle + turn * std::round((near - angle) / turn);
}

}  // namespace

void Track::add(double time, const Pose& pose) {
  times_.push_back(time);
  poses_.push_back(pose);
}

Pose Track::at(double time) const {
  const double place =
      std::clamp((time - times_.front()) * rate, 1.0, static_cast<double>(times_.size() - 2));
  auto after = static_cast<std::size_t>(place);
  while (after + 1 < times_.size() && times_[after] < time) ++after;
  while (after > 1 && times_[after - 1] >= time) --after;
  const double f = (time - times_[after - 1]) / (times_[after] - times_[after - 1]);
  const Pose &a = poses_[after - 1], &b = poses_[after];
  return {a.position + f * (b.position - a.position), a.attitude + f * (b.attitude - a.attitude)};
}

Track flownTrack(const FlightPlan& plan, const Motion& motion, const Projection& projection) {
  Track track;
  const double seconds = plan.lastTime() - FlightPlan::beginning;
  const auto records = static_cast<std::size_t>(std::ceil(seconds * Track::rate)) + 1;
  double yaw = 0.0;
  for (std::size_t i = 0; i < records; ++i) {
    const double time = FlightPlan::beginning + static_cast<double>(i) / Track::rate;
    const Kinematics way = plan.at(time);
    const point position = way.position + motion.position(time);
    const vector shaken = motion.attitude(time);
    yaw = unwrapped(
        headingInGrid(way.velocity) + azimuthOfGridNorth(position, projection) + shaken.z, yaw);
    track.add(time, {position, {bankOf(way) + shaken.x, meanPitch + shaken.y, yaw}});
  }
  return track;
}

}  // namespace Velorn::Flights::Simulation
