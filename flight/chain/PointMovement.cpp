// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/PointMovement.h"

#include <algorithm>
#include <cmath>

#include "flight/surfaces/SearchPlaces.h"
#include "platform/orvek/Figures.h"

namespace Velorn::Flights {
namespace {

constexpr std::size_t sampled = 2000;

/// Every so many-th point of a raster.
MatchPoints sampleOf(SurfaceStore& surfaces, std::uint32_t strip) {
  MatchPoints points = surfaces.raster(strip, [](const point&) { return true; });
  std::vector<std::uint32_t> numbers;
  const std::size_t step = points.size() / sampled + 1;
  for (std::size_t k = 0; k < points.size(); k += step) {
    numbers.push_back(static_cast<std::uint32_t>(k));
  }
  points.keep(numbers);
  return points;
}

/// Of many points: their distance from the scanner, and from the line below it [m].
struct Reaches {
  std::vector<double> ranges, aside;

  void add(const MatchPoints& points) {
    for (const point& place : points.scanner) {
      ranges.push_back(lengthOf(place - point{}));
      aside.push_back(std::hypot(place.y, place.z));
    }
  }
  double range() { return OrvekStatistic::quantileInPlace(ranges, 0.5); }
  double widthAside() { return OrvekStatistic::quantileInPlace(aside, 0.5); }
};

double byOne(const Velorn::SolverParameters& before, const Velorn::SolverParameters& after,
             Reaches& reaches) {
  const double range = reaches.range(), aside = reaches.widthAside();
  double largest = 0.0;
  const auto look = [&](double change) { largest = std::max(largest, std::abs(change)); };
  for (unsigned int k = 0; k < 3; ++k) {
    look((after.getRangeAngleOffset(k) - before.getRangeAngleOffset(k)) * (k == 0 ? 1.0 : range));
    look((after.getMisalignment(k) - before.getMisalignment(k)) * (k == 2 ? aside : range));
    look(after.getLeverArm(k) - before.getLeverArm(k));
  }
  look((after.getRangeAngleScale(0) - before.getRangeAngleScale(0)) * range);
  return largest;
}

/// The finite ones.
std::vector<double> distancesOf(const std::vector<point>& from, const std::vector<point>& to) {
  std::vector<double> distances;
  for (std::size_t k = 0; k < to.size(); ++k) {
    const double distance = lengthOf(to[k] - from[k]);
    if (std::isfinite(distance)) distances.push_back(distance);
  }
  return distances;
}

}  // namespace

Movement movementOf(RunContext& run, const Solution* before, const Solution& after) {
  constexpr double most = 0.95;
  Movement movement;
  Reaches reaches;
  for (std::uint32_t strip = 0; strip < run.surfaces.size(); ++strip) {
    const MatchPoints points = sampleOf(run.surfaces, strip);
    const auto places = [&](const Solution& solution) {
      return placesBy(solution, run.surfaces.files(strip).raster, strip,
                      run.configuration().InterpolationFlag,
                      {points.scanner, points.times, points.week});
    };
    auto distances = distancesOf(before ? places(*before) : points.delivered, places(after));
    if (distances.empty()) continue;
    const double its = OrvekStatistic::quantileInPlace(distances, most);
    movement.points = std::fmax(movement.points, its);
    reaches.add(points);
  }
  if (before && !reaches.ranges.empty()) {
    movement.byOne = byOne(before->parameters, after.parameters, reaches);
  }
  return movement;
}

}  // namespace Velorn::Flights
