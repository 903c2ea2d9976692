// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/Motion.h"

#include <cmath>
#include <numbers>

#include "flight/simulation/Random.h"
#include "platform/geomra/Degree.h"

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

struct Wave {
  double amplitude, period;
};

/// Swaying, oscillation and vibration of each channel: [m] or [degree], [s].
constexpr std::array<std::array<Wave, 3>, 6> waves{
    {{{{0.8, 19.0}, {0.10, 5.3}, {0.01, 1.1}}},    // easting
     {{{0.8, 23.0}, {0.10, 4.7}, {0.01, 1.3}}},    // northing
     {{{0.6, 17.0}, {0.08, 4.3}, {0.01, 0.9}}},    // height
     {{{0.8, 9.0}, {0.25, 3.1}, {0.03, 0.7}}},     // roll
     {{{0.5, 11.0}, {0.15, 2.7}, {0.02, 0.6}}},    // pitch
     {{{0.6, 13.0}, {0.15, 4.1}, {0.02, 0.8}}}}};  // yaw

}  // namespace

Motion::Motion(std::uint64_t seed) : channels_{} {
  Random random(seed, Draw::motion);
  for (std::size_t i = 0; i < waves.size(); ++i) {
    const double unit = i < 3 ? 1.0 : degree;
    for (std::size_t k = 0; k < waves[i].size(); ++k) {
      const double period = waves[i][k].period * random.uniform(0.9, 1.1);
      const double phase = random.uniform(0.0, 2.0 * std::numbers::pi);
      channels_[i][k] = {unit * waves[i][k].amplitude, 2.0 * std::numbers::pi / period, phase};
    }
  }
}

double Motion::at(std::size_t channel, double time) const {
  double sum = 0.0;
  for (const auto& sine : channels_[channel]) {
    sum += sine.amplitude * std::sin(sine.circular * time + sine.phase);
  }
  return sum;
}

}  // namespace Velorn::Flights::Simulation
