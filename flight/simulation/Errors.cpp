// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/Errors.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "flight/simulation/Random.h"
#include "platform/geomra/Degree.h"

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

using Eigen::Vector3d;

/// Standard deviations of constant and drift, and the middle of the amplitudes.
struct Sizes {
  double constant, linear, amplitude;
};
constexpr Sizes ofPosition{0.03, 0.0006, 0.01};                               // [m], [m/s], [m]
constexpr Sizes ofAttitude{0.005 * degree, 0.0001 * degree, 0.001 * degree};  // [rad], ...

Correction drawn(const Sizes& sizes, double scale, Random& random) {
  Correction c;
  for (int j = 0; j < 3; ++j) {
    c.constant[j] = scale * sizes.constant * random.normal();
    c.linear[j] = scale * sizes.linear * random.normal();
    c.amplitude[j] = scale * sizes.amplitude * random.uniform(0.5, 1.5);
    c.period[j] = random.uniform(30.0, 60.0);
    c.phase[j] = random.uniform(0.0, 2.0 * std::numbers::pi);
  }
  return c;
}

/// 1 during a strip, 0 from its lead on, smooth to the second derivative between.
double presence(const PlannedStrip& strip, double time) {
  const double outside = std::max({0.0, strip.firstTime - time, time - strip.lastTime});
  const double x = std::max(0.0, 1.0 - outside / FlightPlan::lead);
  return x * x * x * (10.0 + x * (-15.0 + 6.0 * x));
}

vector vectorOf(const Vector3d& v) {
  return {v[0], v[1], v[2]};
}

}  // namespace

MountingValues nominalMounting() {
  MountingValues mounting;
  mounting.misalignment = degree * Vector3d(0.21, -0.37, 0.44);
  mounting.leverArm = Vector3d(0.12, -0.18, 0.85);
  return mounting;
}

MountingValues trueMounting(const SimulationSettings& options) {
  MountingValues mounting = nominalMounting();
  mounting.offsets = scaleOf(options, "offsets") * Vector3d(0.03, 0.01 * degree, 0.01 * degree);
  mounting.scales = scaleOf(options, "scales") * Vector3d(1e-4, 1e-4, 1e-4);
  mounting.misalignment += scaleOf(options, "misalignment") * degree * Vector3d(0.05, -0.03, 0.1);
  mounting.leverArm += scaleOf(options, "lever-arm") * Vector3d(0.05, -0.05, 0.05);
  return mounting;
}

Vector3d Correction::at(double dt) const {
  Vector3d sum = constant + linear * dt;
  for (int j = 0; j < 3; ++j) {
    sum[j] += amplitude[j] * std::sin(2.0 * std::numbers::pi * dt / period[j] + phase[j]);
  }
  return sum;
}

Pose StripErrors::added(const Pose& pose, double time, double factor) const {
  const double dt = time - firstTime;
  return {pose.position + factor * vectorOf(position.at(dt)),
          pose.attitude + factor * vectorOf(attitude.at(dt))};
}

StripErrors drawnErrors(const SimulationSettings& options, std::uint64_t strip, double firstTime) {
  Random random(options.seed, Draw::errors, strip);
  StripErrors errors;
  errors.firstTime = firstTime;
  errors.position = drawn(ofPosition, scaleOf(options, "position"), random);
  errors.attitude = drawn(ofAttitude, scaleOf(options, "attitude"), random);
  return errors;
}

Track deliveredTrack(const Track& truth, const std::vector<PlannedStrip>& strips,
                     const std::vector<StripErrors>& errors) {
  Track delivered;
  for (std::size_t i = 0; i < truth.size(); ++i) {
    const double time = truth.time(i);
    Pose pose = truth.pose(i);
    for (std::size_t k = 0; k < strips.size(); ++k) {
      const double weight = presence(strips[k], time);
      if (weight == 0.0) continue;
      pose = errors[k].added(pose, time, -weight);
    }
    delivered.add(time, pose);
  }
  return delivered;
}

}  // namespace Velorn::Flights::Simulation
