// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/StripScale.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "flight/strips/Median.h"
#include "flight/strips/ParallelLoop.h"
#include "flight/surfaces/GrowingPlane.h"

namespace Velorn::Flights {
namespace {

constexpr std::size_t windows = 16, pointsOfWindow = 3000, spotsOfWindow = 32;
constexpr std::size_t fewest = 16, most = 256;  // neighbours of a spot
constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

double aside(const point& a, const point& b) {
  return std::max(std::abs(a.x - b.x), std::abs(a.y - b.y));
}

/// Half the side of the square about a place that holds as many points as a window shall.
double halfSideOf(const point& seed, std::span<const point> points,
                  const std::vector<std::uint32_t>& members) {
  constexpr std::size_t samples = 30'000, fewestSamples = 8;
  const std::size_t step = std::max<std::size_t>(1, members.size() / samples);
  std::vector<double> distances;
  for (std::size_t k = 0; k < members.size(); k += step) {
    distances.push_back(aside(points[members[k]], seed));
  }
  const std::size_t rank = std::max(pointsOfWindow / step, fewestSamples);
  if (rank >= distances.size()) return std::numeric_limits<double>::infinity();
  const auto at = distances.begin() + static_cast<std::ptrdiff_t>(rank);
  std::nth_element(distances.begin(), at, distances.end());
  return *at;
}

struct Spot {
  double spacing = unknown, roughness = unknown;
};

/// Roughness of the smallest plane about a place that is thrice as wide as it is thick.
double roughnessAbout(std::span<const point> nearest) {
  constexpr double thick = 3.0;
  for (std::size_t count = fewest; count <= nearest.size(); count *= 2) {
    const PlaneFit fit = planeThrough(nearest.first(count));
    if (fit.exists() && fit.spread[0] >= thick * fit.roughness) return fit.roughness;
  }
  return unknown;
}

Spot spotAt(const point& place, const NeighbourTree& tree, std::span<const point> places) {
  std::vector<Neighbour> room(most);
  Neighbours found(room, 1e6);
  tree.search(place, found);
  if (found.found().size() < fewest) return {};
  std::vector<point> nearest;
  for (const Neighbour& one : found.found()) nearest.push_back(places[one.number]);
  const double square = found.found()[fewest - 1].square;
  return {std::sqrt(square * std::numbers::pi / fewest), roughnessAbout(nearest)};
}

/// Places well within a window, whose neighbours lie in it.
std::vector<Spot> spotsAbout(const point& seed, std::span<const point> points,
                             const std::vector<std::uint32_t>& members) {
  const double half = halfSideOf(seed, points, members);
  std::vector<point> places, inner;
  for (const std::uint32_t i : members) {
    const double distance = aside(points[i], seed);
    if (distance <= half) places.push_back(points[i]);
    if (distance <= half / 2.0) inner.push_back(points[i]);
  }
  const NeighbourTree tree(places);
  const std::size_t step = std::max<std::size_t>(1, inner.size() / spotsOfWindow);
  std::vector<Spot> spots;
  for (std::size_t k = 0; k < inner.size(); k += step) {
    spots.push_back(spotAt(inner[k], tree, places));
  }
  return spots;
}

/// The median of the values about the lower quartile, then of those about that, and so on.
double commonOfSmoother(std::vector<float> values) {
  if (values.empty()) return unknown;
  std::sort(values.begin(), values.end());
  auto middle = static_cast<double>(values[values.size() / 4]);
  for (int k = 0; k < 20; ++k) {
    const auto at = [&](double value) {
      return std::lower_bound(values.begin(), values.end(), static_cast<float>(value));
    };
    const auto first = at(0.5 * middle), last = at(1.5 * middle);
    if (first == last) return middle;
    middle = static_cast<double>(*(first + (last - first) / 2));
  }
  return middle;
}

/// The next one of 1, 2 and 5 times the powers of ten, on a logarithmic scale.
double roundLength(double value) {
  const double power = std::pow(10.0, std::floor(std::log10(value)));
  const double first = value / power;  // 1 to 10
  for (const double step : {1.0, 2.0, 5.0}) {
    const double next = step == 2.0 ? 5.0 : 2.0 * step;
    if (first < std::sqrt(step * next)) return step * power;
  }
  return 10.0 * power;
}

}  // namespace

StripScale scaleOf(std::span<const point> points, const std::vector<std::uint32_t>& members) {
  StripScale scale;
  scale.points = members.size();
  if (members.empty()) return scale;
  std::vector<std::vector<Spot>> found(windows);
  forEachInParallel(0, windows, 1, [&](std::size_t k) {
    const std::size_t seed = (2 * k + 1) * members.size() / (2 * windows);
    found[k] = spotsAbout(points[members[seed]], points, members);
  });
  std::vector<float> spacings, roughness;
  for (const auto& spots : found) {
    for (const Spot& spot : spots) {
      if (spot.spacing == spot.spacing) spacings.push_back(static_cast<float>(spot.spacing));
      if (spot.roughness == spot.roughness) roughness.push_back(static_cast<float>(spot.roughness));
    }
  }
  if (!spacings.empty()) scale.spacing = upperMedianOf(std::move(spacings));
  scale.noise = commonOfSmoother(std::move(roughness));
  return scale;
}

WorkLengths lengthsFor(const StripScale& scale) {
  WorkLengths lengths;
  if (scale.noise > 0.0)
    lengths.maxRoughness = std::clamp(roundLength(2.5 * scale.noise), 0.02, 1.0);
  if (!(scale.spacing > 0.0)) return lengths;
  constexpr double cells = 2500.0;  // of a strip, as many as there is room for
  // n points of a disc have the lesser spread s sqrt(n / pi) / 2.
  const double noise = scale.noise > 0.0 ? scale.noise : 0.0;
  const double needed = noise / (0.5 * std::numbers::inv_sqrtpi * scale.spacing * wellKnownNormal);
  const double width = scale.spacing * std::sqrt(std::max(1.0, needed / fewest));
  const double unit = roundLength(width / 4.0);
  lengths.cell = std::clamp(unit, 0.01, lengths.cell);
  lengths.largestCell = std::max(unit, roundLength(std::sqrt(scale.area() / cells)));
  lengths.searchRadius = std::clamp(30.0 * unit, 2.0, 30.0);
  lengths.neighbourRadius = std::max({1.0, std::min(50.0 * unit, 5.0), 20.0 * unit});
  return lengths;
}

StripScale together(std::span<const StripScale> scales) {
  StripScale all;
  std::vector<float> spacings, noises;
  for (const StripScale& one : scales) {
    if (one.spacing == one.spacing) spacings.push_back(static_cast<float>(one.spacing));
    if (one.noise == one.noise) noises.push_back(static_cast<float>(one.noise));
    all.points = all.points == 0 ? one.points : std::min(all.points, one.points);
  }
  all.spacing = upperMedianOf(std::move(spacings));
  all.noise = upperMedianOf(std::move(noises));
  return all;
}

}  // namespace Velorn::Flights
