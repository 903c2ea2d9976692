// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/Survey.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "flight/simulation/Random.h"
#include "flight/strips/ParallelLoop.h"
#include "platform/geomra/Degree.h"
#include "platform/tessaly/PolarCoordinates.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

using Eigen::Vector3d;

/// Where a beam ends.
struct End {
  std::uint32_t plane;
  double range;  // [m]
  point place;
};

/// One beam, by its range.
class Beam {
 public:
  Beam(const Beams& beams, const Pulse& pulse) : beams_(beams), pulse_(pulse) {}

  point at(double range) const {
    return beams_.world(Tessaly::cartesianCoordinatesFromPolar({range, pulse_.q1, pulse_.q2}));
  }
  double depthPerRange() const {
    return beams_.depth(Tessaly::cartesianCoordinatesFromPolar({1.0, pulse_.q1, pulse_.q2}));
  }

 private:
  const Beams& beams_;
  const Pulse& pulse_;
};

/// Where a beam meets the plane of a surface, by Newton's method; the chord's slope is as good as
/// the exact one, for in the projection the beam is bent by some 1e-5 m only between its two ends.
std::optional<End> metPlane(const Beam& beam, const Plane& plane, std::uint32_t number,
                            double range, const vector& perRange) {
  constexpr double close = 2e-8;  // [m], some times the rounding of northings
  for (int i = 0; i < 5; ++i) {
    const point place = beam.at(range);
    const double off = dot(place - plane.through, plane.normal);
    if (std::abs(off) < close) return End{number, range, place};
    range -= off / dot(perRange, plane.normal);
  }
  return std::nullopt;
}

/// Where a beam ends on the terrain. In the projection it is bent by the earth's curvature, but
/// not noticeably between the highest and the lowest surface: there a chord finds the surface.
std::optional<End> endOf(const Beam& beam, double sensorHeight, const Terrain& terrain) {
  constexpr double flattestBeam = 0.3, slack = 2.0;
  const double fall = beam.depthPerRange();
  if (fall < flattestBeam) return std::nullopt;
  const double high = (sensorHeight - terrain.highest() - slack) / fall;
  const double low = (sensorHeight - terrain.lowest() + slack) / fall;
  const Segment chord{beam.at(high), beam.at(low)};
  const auto hit = terrain.firstHit(chord);
  if (!hit) return std::nullopt;
  const vector perRange = 1.0 / (low - high) * (chord.to - chord.from);
  const auto end = metPlane(beam, terrain.planes()[hit->plane], hit->plane,
                            high + hit->along * (low - high), perRange);
  // Within the chord's error of an edge the beam may miss the surface that the chord meets.
  if (!end || !terrain.belongs(end->plane, end->place.x, end->place.y)) return std::nullopt;
  return end;
}

double brightnessOf(Surface surface, double range) {
  const double reflectance = surface == Surface::building ? 28.0
                             : surface == Surface::bed    ? 8.0
                                                          : 20.0;
  return reflectance - 20.0 * std::log10(range / 500.0);
}

}  // namespace

Survey::Survey(const SimulationSettings& options, const FlightPlan& plan, const Terrain& terrain,
               const Track& track, const MountingValues& mounting, const Projection& projection)
    : options_(options),
      plan_(plan),
      terrain_(terrain),
      track_(track),
      mounting_(mounting),
      projection_(projection),
      scanner_(options, plan) {}

std::optional<Echo> Survey::measure(std::size_t strip, std::size_t number) const {
  const Pulse pulse = scanner_.pulse(plan_.strips()[strip], number);
  const Pose pose = track_.at(pulse.time);
  const Beams beams(pose, mounting_.misalignment, mounting_.leverArm, projection_);
  const auto end = endOf(Beam(beams, pulse), pose.position.z, terrain_);
  if (!end) return std::nullopt;
  Random random(options_.seed, Draw::noise, strip, number);
  const Vector3d noise(options_.rangeNoise * random.normal(),
                       options_.angleNoise * degree * random.normal(),
                       options_.angleNoise * degree * random.normal());
  const Vector3d real(end->range, pulse.q1, pulse.q2);
  const Vector3d q =
      ((real - mounting_.offsets).array() / (1.0 + mounting_.scales.array())).matrix() + noise;
  const double brightness = brightnessOf(terrain_.planes()[end->plane].surface, end->range);
  return Echo{pulse.time, Tessaly::cartesianCoordinatesFromPolar({q[0], q[1], q[2]}), end->place,
              end->plane, brightness + 0.5 * random.normal()};
}

double Survey::firstTime(std::size_t strip) const {
  const std::size_t pulses = scanner_.pulsesIn(plan_.strips()[strip]);
  for (std::size_t i = 0; i < pulses; ++i) {
    if (const auto echo = measure(strip, i)) return echo->time;
  }
  throw Error(fmt::format("strip {}: none of its {} pulses meets the ground", strip + 1, pulses));
}

std::vector<Echo> Survey::scan(std::size_t strip, const std::function<void()>& ask) const {
  constexpr std::size_t block = 1 << 20;  // pulses whose results are held twice
  const std::size_t pulses = scanner_.pulsesIn(plan_.strips()[strip]);
  std::vector<Echo> echoes;
  echoes.reserve(pulses);
  std::vector<std::optional<Echo>> results;
  for (std::size_t first = 0; first < pulses; first += block) {
    results.assign(std::min(block, pulses - first), std::nullopt);
    forEachInChunks(
        results.size(), [&](std::size_t /*done*/) { ask(); },
        [&](std::size_t i) { results[i] = measure(strip, first + i); });
    for (const auto& echo : results) {
      if (echo) echoes.push_back(*echo);
    }
  }
  return echoes;
}

}  // namespace Velorn::Flights::Simulation
