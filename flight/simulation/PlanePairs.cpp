// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/PlanePairs.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "flight/simulation/Random.h"
#include "platform/geomra/Degree.h"

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

using Velorn::TerrainType;

constexpr double flattestSlope = 3.0 * degree;
constexpr double farthest = 5.0;  // partner on the plane [m]
constexpr std::size_t groundTruthShare = 10;

template <typename T>
T taken(std::vector<T>& from, Random& random) {
  std::swap(from[random.below(from.size())], from.back());
  const T last = from.back();
  from.pop_back();
  return last;
}

const Place* nearest(std::span<const Place> places, const point& to) {
  const Place* found = nullptr;
  double least = farthest * farthest;
  for (const Place& place : places) {
    const vector away = place.at - to;
    if (dot(away, away) > least) continue;
    least = dot(away, away);
    found = &place;
  }
  return found;
}

/// The pairs of two sides on some planes, plane by plane in turn.
class Source {
 public:
  Source(std::size_t i, std::size_t j, const std::vector<PlacesOnPlanes>& sides,
         std::vector<std::uint32_t> planes, Random random)
      : i_(i), j_(j), partners_(sides[j]), random_(random) {
    while (!planes.empty()) {
      std::vector<const Place*>& left = left_.emplace_back();
      for (const Place& place : sides[i].on(taken(planes, random_))) left.push_back(&place);
    }
  }

  std::size_t i() const { return i_; }
  std::size_t j() const { return j_; }

  /// Nothing when all points have had their turn.
  std::optional<PlanePair> next() {
    while (!left_.empty()) {
      if (turn_ >= left_.size()) turn_ = 0;
      if (const auto pair = nextOn(left_[turn_])) {
        ++turn_;
        return pair;
      }
      left_.erase(left_.begin() + static_cast<std::ptrdiff_t>(turn_));
    }
    return std::nullopt;
  }

 private:
  std::optional<PlanePair> nextOn(std::vector<const Place*>& left) {
    while (!left.empty()) {
      const Place& one = *taken(left, random_);
      const Place* other = nearest(partners_.on(one.plane), one.at);
      if (other != nullptr) return PlanePair{one.plane, one.number, other->number};
    }
    return std::nullopt;
  }

  std::size_t i_, j_;
  const PlacesOnPlanes& partners_;
  Random random_;
  std::vector<std::vector<const Place*>> left_;  // by plane
  std::size_t turn_ = 0;
};

/// One for each kind of surface that two sides have in common.
void addSources(std::size_t i, std::size_t j, const std::vector<PlacesOnPlanes>& sides,
                const std::vector<Plane>& planes, std::uint64_t seed,
                std::vector<Source>& sources) {
  std::map<TerrainType, std::vector<std::uint32_t>> common;
  for (std::uint32_t k = 0; k < planes.size(); ++k) {
    if (!sides[i].on(k).empty() && !sides[j].on(k).empty()) common[kindOf(planes[k])].push_back(k);
  }
  for (auto& [kind, numbers] : common) {
    const Random random(seed, Draw::correspondences, i * sides.size() + j,
                        static_cast<std::uint64_t>(kind));
    sources.emplace_back(i, j, sides, std::move(numbers), random);
  }
}

using PairsBySides = std::map<std::pair<std::size_t, std::size_t>, std::vector<PlanePair>>;

/// Takes one pair from each source, then another from each, and so on.
/// @return the number of pairs
std::size_t drawInTurn(std::vector<Source>& sources, std::size_t count, PairsBySides& drawn) {
  std::size_t number = 0;
  for (bool any = true; any;) {
    any = false;
    for (Source& source : sources) {
      if (number == count) return number;
      const auto pair = source.next();
      if (!pair) continue;
      drawn[{source.i(), source.j()}].push_back(*pair);
      ++number;
      any = true;
    }
  }
  return number;
}

}  // namespace

TerrainType kindOf(const Plane& plane) {
  if (plane.surface == Surface::building) return TerrainType::ROOF;
  if (plane.surface == Surface::bed) return TerrainType::BED_POINTS;
  return plane.slope() > flattestSlope ? TerrainType::SLOPE : TerrainType::FLAT;
}

PlacesOnPlanes::PlacesOnPlanes(std::vector<Place> places, std::size_t planes)
    : places_(std::move(places)), firstOn_(planes + 1) {
  std::sort(places_.begin(), places_.end(), [](const Place& a, const Place& b) {
    return std::tie(a.plane, a.number) < std::tie(b.plane, b.number);
  });
  for (const Place& place : places_) ++firstOn_[place.plane + 1];
  for (std::size_t k = 0; k < planes; ++k) firstOn_[k + 1] += firstOn_[k];
}

std::span<const Place> PlacesOnPlanes::on(std::uint32_t plane) const {
  return std::span(places_).subspan(firstOn_[plane], firstOn_[plane + 1] - firstOn_[plane]);
}

std::vector<PairedSides> pairedSides(const std::vector<PlacesOnPlanes>& sides,
                                     const std::vector<Plane>& planes, std::size_t count,
                                     std::uint64_t seed) {
  const std::size_t groundTruth = sides.size() - 1;
  std::vector<Source> betweenStrips, withGroundTruth;
  for (std::size_t i = 0; i < groundTruth; ++i) {
    for (std::size_t j = i + 1; j < sides.size(); ++j) {
      addSources(i, j, sides, planes, seed, j == groundTruth ? withGroundTruth : betweenStrips);
    }
  }
  PairsBySides drawn;
  const std::size_t known = drawInTurn(withGroundTruth, count / groundTruthShare, drawn);
  drawInTurn(betweenStrips, count - known, drawn);
  std::vector<PairedSides> all;
  for (auto& [ij, pairs] : drawn) {
    std::sort(pairs.begin(), pairs.end(), [](const PlanePair& a, const PlanePair& b) {
      return std::tie(a.i, a.j) < std::tie(b.i, b.j);
    });
    all.push_back({ij.first, ij.second, std::move(pairs)});
  }
  return all;
}

}  // namespace Velorn::Flights::Simulation
