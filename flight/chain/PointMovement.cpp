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

double byOne(const Velorn::SolverParameters& before, const Velorn::SolverParameters& after,
             const Reach& reach) {
  double largest = 0.0;
  const auto look = [&](double change) { largest = std::max(largest, std::abs(change)); };
  for (unsigned int k = 0; k < 3; ++k) {
    look((after.getRangeAngleOffset(k) - before.getRangeAngleOffset(k)) *
         (k == 0 ? 1.0 : reach.range));
    look((after.getMisalignment(k) - before.getMisalignment(k)) *
         (k == 2 ? reach.aside : reach.range));
    look(after.getLeverArm(k) - before.getLeverArm(k));
  }
  look((after.getRangeAngleScale(0) - before.getRangeAngleScale(0)) * reach.range);
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

Reach reachOf(RunContext& run) {
  std::vector<double> ranges, aside;
  for (std::uint32_t strip = 0; strip < run.surfaces.size(); ++strip) {
    for (const point& place : sampleOf(run.surfaces, strip).scanner) {
      ranges.push_back(lengthOf(place - point{}));
      aside.push_back(std::hypot(place.y, place.z));
    }
  }
  const Reach least;
  return {std::fmax(least.range, OrvekStatistic::quantileInPlace(ranges, 0.5)),
          std::fmax(least.aside, OrvekStatistic::quantileInPlace(aside, 0.5))};
}

Movement movementOf(RunContext& run, const Solution* before, const Solution& after) {
  constexpr double most = 0.95;
  Movement movement;
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
  }
  if (before && std::isfinite(movement.points)) {
    movement.byOne = byOne(before->parameters, after.parameters, reachOf(run));
  }
  return movement;
}

}  // namespace Velorn::Flights
