// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/GroundTruth.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <optional>
#include <utility>

#include "flight/matching/ControlTally.h"
#include "flight/matching/Rejection.h"
#include "flight/strips/ParallelLoop.h"

namespace Velorn::Flights {
namespace {

std::vector<std::uint32_t> allOf(std::size_t count) {
  std::vector<std::uint32_t> numbers(count);
  std::iota(numbers.begin(), numbers.end(), 0U);
  return numbers;
}

point inPlan(const point& place) {
  return {place.x, place.y, 0.0};
}

PointTiles planTreeOf(std::vector<point> places) {
  for (point& place : places) place = inPlan(place);
  return {places, allOf(places.size())};
}

Neighbour nearestOf(const PointTiles& tree, const point& place, double radius) {
  Neighbour room{0, infinite};
  Neighbours found({&room, 1}, radius);
  tree.search(place, found);
  return room;
}

/// Sets that are joined one by one; a set is known by its least member.
class JoinedSets {
 public:
  explicit JoinedSets(std::size_t count) : parents_(allOf(count)) {}

  std::uint32_t of(std::uint32_t k) {
    while (parents_[k] != k) k = parents_[k] = parents_[parents_[k]];
    return k;
  }
  void join(std::uint32_t a, std::uint32_t b) {
    const auto [low, high] = std::minmax({of(a), of(b)});
    parents_[high] = low;
  }

 private:
  std::vector<std::uint32_t> parents_;
};

/// Everything about a strip's point and the ground truth's, which has no number where none is in
/// reach.
/// @return none: they may be a correspondence
std::optional<Fate> examine(const PartnerSearch& strip, const GroundTruth& known, double reach,
                            Correspondence& pair) {
  const SearchRules& rules = strip.rules();
  const MatchPoints& points = strip.points();
  const point& p = points.places()[pair.i];
  const Neighbour nearest = known.nearest(p, reach);
  if (!(nearest.square < infinite)) return {};
  pair.j = nearest.number;
  pair.code = codeOf(Velorn::TerrainType::GROUND_TRUTH);
  pair.normalI = pair.normalJ = known.points().normals[pair.j];
  const vector away = known.points().places[pair.j] - p;
  const double along = dot(pair.normalI, away);
  const double beside = std::sqrt(std::max(0.0, nearest.square - along * along));
  const double spacing = known.spacing() > 0.0 ? known.spacing() : rules.radius;
  if (beside > std::min(spacing, rules.radius)) return Fate::tooFar;
  const PlaneFit plane = strip.planeAbout(pair.i);
  if (!plane.exists()) return Fate::noPlane;
  if (!(std::abs(dot(plane.normal, pair.normalI)) >= rules.cosine)) return Fate::angle;
  pair.roughnessI = plane.roughness;
  const vector& beam = points.beams[pair.i];
  if (rules.ontoPlanes) pair.shiftI = shiftOntoPlane(plane.distanceOf(p), plane.normal, beam);
  pair.distance = dot(pair.normalI, known.points().places[pair.j] - shifted(p, beam, pair.shiftI));
  return {};
}

std::vector<std::uint32_t> nearGroundTruth(const PartnerSearch& strip, const GroundTruth& known,
                                           double reach) {
  const auto& places = strip.points().places();
  std::vector<std::uint8_t> isNear(places.size());
  forEachInParallel(0, places.size(), 4096,
                    [&](std::size_t k) { isNear[k] = known.isNear(places[k], reach) ? 1 : 0; });
  std::vector<std::uint32_t> near;
  for (std::uint32_t k = 0; k < places.size(); ++k) {
    if (isNear[k] != 0) near.push_back(k);
  }
  return near;
}

void count(Fate fate, std::uint32_t item, ControlTally& items) {
  if (fate == Fate::tooFar) items.count(item, &ControlItem::beside);
  if (fate == Fate::angle) items.count(item, &ControlItem::turnedAway);
  if (fate == Fate::noPlane) items.count(item, &ControlItem::rough);
}

}  // namespace

GroundTruth::GroundTruth(KnownPoints points)
    : points_(std::move(points)),
      tree_(points_.places, allOf(points_.places.size())),
      planTree_(planTreeOf(points_.places)),
      spacing_(medianSpacing()) {
  findPatches();
}

double GroundTruth::medianSpacing() const {
  if (points_.places.size() < 2) return 0.0;
  std::vector<double> distances(points_.places.size());
  forEachInParallel(0, distances.size(), 64, [&](std::size_t k) {
    std::array<Neighbour, 2> room{Neighbour{0, infinite}, Neighbour{0, infinite}};
    Neighbours found(room, 1e150);  // the point itself, and the next one
    tree_.search(points_.places[k], found);
    distances[k] = std::sqrt(room[1].square);
  });
  return spreadOf(std::move(distances)).median;
}

void GroundTruth::findPatches() {
  constexpr std::size_t linked = 32;  // nearest points that are looked at: more than a ring's
  JoinedSets sets(points_.places.size());
  for (std::uint32_t k = 0; k < points_.places.size(); ++k) {
    std::array<Neighbour, linked> room;
    Neighbours found(room, 3.0 * spacing_);
    tree_.search(points_.places[k], found);
    for (const Neighbour& one : found.found()) sets.join(k, one.number);
  }
  patches_.resize(points_.places.size());
  for (std::uint32_t k = 0; k < patches_.size(); ++k) {
    const std::uint32_t first = sets.of(k);
    patches_[k] = first == k ? static_cast<std::uint32_t>(patchCount_++) : patches_[first];
  }
}

Neighbour GroundTruth::nearest(const point& place, double radius) const {
  return nearestOf(tree_, place, radius);
}

bool GroundTruth::isNear(const point& place, double radius) const {
  return nearestOf(planTree_, inPlan(place), radius).square < infinite;
}

std::vector<Correspondence> searchGroundTruth(const PartnerSearch& strip,
                                              const GroundTruth& groundTruth, double reach,
                                              CandidateTally& tally, ControlTally& items,
                                              const std::function<void(std::size_t)>& tell) {
  std::vector<Correspondence> pairs;
  if (groundTruth.empty()) return pairs;
  const auto near = nearGroundTruth(strip, groundTruth, reach);
  pairs.resize(near.size());
  std::vector<std::optional<Fate>> fates(near.size());
  forEachInChunks(near.size(), tell, [&](std::size_t k) {
    pairs[k].i = near[k];
    fates[k] = examine(strip, groundTruth, reach, pairs[k]);
  });
  std::size_t found = 0;
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    if (pairs[k].j == noPoint) continue;
    tally.add(pairs[k]);
    if (fates[k]) {
      tally.judge(pairs[k], *fates[k]);
      count(*fates[k], groundTruth.patchOf(pairs[k].j), items);
    } else {
      pairs[found++] = pairs[k];
    }
  }
  pairs.resize(found);
  return pairs;
}

}  // namespace Velorn::Flights
