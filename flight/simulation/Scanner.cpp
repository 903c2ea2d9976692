// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/Scanner.h"

#include <cmath>
#include <numbers>

#include "platform/geomra/Degree.h"

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

constexpr double halfSwath = halfSwathDegrees * degree;

/// The axis of the mirror is a little off the flying direction: the lines on the ground are askew.
constexpr double tiltOfMirror = 0.2 * degree;

}  // namespace

Scanner::Scanner(const SimulationSettings& options, const FlightPlan& plan) {
  double seconds = 0.0;
  for (const auto& strip : plan.strips()) seconds += strip.duration();
  rate_ = static_cast<double>(options.points) / seconds;
}

std::size_t Scanner::pulsesIn(const PlannedStrip& strip) const {
  return static_cast<std::size_t>(strip.duration() * rate_);
}

Pulse Scanner::pulse(const PlannedStrip& strip, std::size_t number) const {
  // So many lines that points are as far apart along the strip as across it.
  const double swath = 2.0 * strip.heightAboveGround * std::tan(halfSwath);
  const double linesPerSecond = std::sqrt(strip.speed * rate_ / swath);
  const double seconds = static_cast<double>(number) / rate_;
  const double lines = seconds * linesPerSecond;
  const double scan = halfSwath * (1.0 - 2.0 * (lines - std::floor(lines)));
  return {strip.firstTime + seconds, tiltOfMirror * std::sin(scan), std::numbers::pi / 2.0 + scan};
}

}  // namespace Velorn::Flights::Simulation
