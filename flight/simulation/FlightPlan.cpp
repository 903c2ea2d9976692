// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/FlightPlan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/geomra/Degree.h"

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

constexpr double azimuth = 15.0 * degree;  // of the parallel strips, from grid north
constexpr double overlap = 0.5;            // of neighbouring strips
constexpr double higher = 1.35;            // the crossing strips fly so many times as high
const point centre{600'000.0, 5'250'000.0, Terrain::level};
const vector along{std::sin(azimuth), std::cos(azimuth), 0.0};
const vector across{std::cos(azimuth), -std::sin(azimuth), 0.0};

double swathOf(double heightAboveGround) {
  return 2.0 * heightAboveGround * std::tan(halfSwathDegrees * degree);
}

vector upwards(double metres) {
  return {0.0, 0.0, metres};
}

/// The same line flown the other way.
PlannedStrip reversed(const PlannedStrip& strip) {
  PlannedStrip back = strip;
  back.start = strip.at(strip.length);
  back.direction = -1.0 * strip.direction;
  return back;
}

}  // namespace

FlightPlan::FlightPlan(const SimulationSettings& options) {
  addStrips(options);
  for (std::size_t i = 0; i < strips_.size(); ++i) {
    if (i > 0) addTurn(strips_[i - 1], strips_[i]);
    addStraight(strips_[i]);
  }
}

void FlightPlan::addStrips(const SimulationSettings& options) {
  const double swath = swathOf(options.height), spacing = (1.0 - overlap) * swath;
  const double width = (options.strips - 1) * spacing;
  const auto add = [&](const PlannedStrip& strip) {
    strips_.push_back(strips_.size() % 2 == 0 ? strip : reversed(strip));
  };
  for (unsigned int i = 0; i < options.strips; ++i) {
    const point start = centre + (i * spacing - width / 2.0) * across +
                        (-options.length / 2.0) * along + upwards(options.height);
    add({start, along, options.length, options.height, options.speed});
  }
  for (const double place : {0.25, -0.25}) {
    const double height = higher * options.height, length = width + swath;
    const point start =
        centre + (place * options.length) * along + (-length / 2.0) * across + upwards(height);
    add({start, across, length, height, options.speed});
  }
}

void FlightPlan::addStraight(PlannedStrip& strip) {
  const double begin = legs_.empty() ? beginning : legs_.back().end;
  strip.firstTime = begin + lead;
  strip.lastTime = strip.firstTime + strip.duration();
  Leg leg{begin, strip.lastTime + lead, {}};
  leg.c[0] = strip.at(-lead * strip.speed) - point{};
  leg.c[1] = strip.speed * strip.direction;
  legs_.push_back(leg);
}

/// The quintic Hermite curve from one leg to the next, without acceleration at either end: place,
/// velocity and acceleration of the whole way are continuous.
void FlightPlan::addTurn(const PlannedStrip& from, const PlannedStrip& to) {
  const double overshoot = lead * from.speed;
  const point start = from.at(from.length + overshoot);
  const vector way = to.at(-overshoot) - start;
  const double t = std::max(14.0, 1.5 * std::sqrt(dot(way, way)) / from.speed);
  const vector v0 = from.speed * from.direction, v1 = to.speed * to.direction;
  Leg leg{legs_.back().end, legs_.back().end + t, {}};
  leg.c[0] = start - point{};
  leg.c[1] = v0;
  leg.c[3] = std::pow(t, -3) * (10.0 * way - t * (6.0 * v0 + 4.0 * v1));
  leg.c[4] = std::pow(t, -4) * (-15.0 * way + t * (8.0 * v0 + 7.0 * v1));
  leg.c[5] = std::pow(t, -5) * (6.0 * way - 3.0 * t * (v0 + v1));
  legs_.push_back(leg);
}

Kinematics FlightPlan::at(double time) const {
  const auto after = std::upper_bound(legs_.begin() + 1, legs_.end(), time,
                                      [](double t, const Leg& leg) { return t < leg.begin; });
  const Leg& leg = *(after - 1);
  const double s = time - leg.begin;
  Kinematics result;
  for (std::size_t k = 6; k-- > 0;) {
    const auto order = static_cast<double>(k);
    result.position = point{} + s * (result.position - point{}) + leg.c[k];
    if (k >= 1) result.velocity = s * result.velocity + order * leg.c[k];
    if (k >= 2) result.acceleration = s * result.acceleration + (order * (order - 1.0)) * leg.c[k];
  }
  return result;
}

bool FlightPlan::covers(double easting, double northing) const {
  return std::any_of(strips_.begin(), strips_.end(), [&](const PlannedStrip& strip) {
    const vector d = point{easting, northing, strip.start.z} - strip.start;
    const double forward = dot(d, strip.direction);
    const double aside = std::sqrt(std::max(0.0, dot(d, d) - forward * forward));
    const double margin = 0.1 * std::min(strip.length, swathOf(strip.heightAboveGround));
    return forward > margin && forward < strip.length - margin &&
           aside < swathOf(strip.heightAboveGround) / 2.0 - margin;
  });
}

Extent FlightPlan::reach() const {
  constexpr double infinite = std::numeric_limits<double>::infinity();
  Extent extent{infinite, -infinite, infinite, -infinite};
  for (const auto& strip : strips_) {
    const double margin = swathOf(strip.heightAboveGround) + 50.0;
    for (const point& end : {strip.start, strip.at(strip.length)}) {
      extent.west = std::min(extent.west, end.x - margin);
      extent.east = std::max(extent.east, end.x + margin);
      extent.south = std::min(extent.south, end.y - margin);
      extent.north = std::max(extent.north, end.y + margin);
    }
  }
  return extent;
}

}  // namespace Velorn::Flights::Simulation
