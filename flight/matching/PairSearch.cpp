// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/PairSearch.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>

#include "flight/strips/ParallelLoop.h"
#include "flight/surfaces/GrowingPlane.h"

namespace Velorn::Flights {
namespace {

std::vector<std::uint32_t> numbersOf(std::uint8_t code, const MatchPoints& points) {
  std::vector<std::uint32_t> numbers;
  for (std::size_t k = 0; k < points.size(); ++k) {
    if (points.codes[k] == code) numbers.push_back(static_cast<std::uint32_t>(k));
  }
  return numbers;
}

/// Sets the partners that another candidate is nearer to at an infinite distance.
void leaveToNearest(std::vector<Neighbour>& partners) {
  std::vector<std::uint32_t> order;
  for (std::uint32_t k = 0; k < partners.size(); ++k) {
    if (partners[k].square < infinite) order.push_back(k);
  }
  std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    return std::tie(partners[a].number, partners[a].square, a) <
           std::tie(partners[b].number, partners[b].square, b);
  });
  for (std::size_t k = 1; k < order.size(); ++k) {
    const bool isTaken = partners[order[k]].number == partners[order[k - 1]].number;
    if (isTaken) partners[order[k]].square = infinite;
  }
}

std::vector<Neighbour> nearestPartners(const MatchPoints& candidates, const PartnerSearch& search,
                                       const std::function<void(std::size_t)>& tell) {
  std::vector<Neighbour> partners(candidates.size());
  forEachInChunks(candidates.size(), tell, [&](std::size_t k) {
    partners[k] =
        search.nearest(candidates.places()[k], candidates.codes[k], candidates.normals[k]);
  });
  if (!search.rules().areFarApart) leaveToNearest(partners);
  return partners;
}

bool doAgree(const vector& a, const vector& b, const SearchRules& rules) {
  return dot(a, b) / (lengthOf(a) * lengthOf(b)) >= rules.cosine;
}

/// Everything about the two points of a correspondence but their numbers and class.
/// @return none: they may be one
std::optional<Fate> examine(const MatchPoints& candidates, const PartnerSearch& search,
                            Correspondence& pair) {
  const MatchPoints& partners = search.points();
  const SearchRules& rules = search.rules();
  const std::size_t i = pair.i, j = pair.j;
  const vector& normalI = candidates.normals[i];
  if (!doAgree(normalI, partners.normals[j], rules)) return Fate::angle;
  const PlaneFit plane = search.planeAbout(j);
  pair.roughnessI = candidates.roughness[i];
  pair.roughnessJ = plane.roughness;
  if (!plane.exists() || !std::isfinite(pair.roughnessI + candidates.heights[i])) {
    return Fate::noPlane;
  }
  pair.normalI = (1.0 / lengthOf(normalI)) * normalI;
  pair.normalJ = plane.normal;
  const point &p = candidates.places()[i], &q = partners.places()[j];
  if (rules.ontoPlanes) {
    pair.shiftI = shiftOntoPlane(candidates.heights[i], pair.normalI, candidates.beams[i]);
    pair.shiftJ = shiftOntoPlane(plane.distanceOf(q), plane.normal, partners.beams[j]);
  }
  pair.distance = dot(pair.normalI, shifted(q, partners.beams[j], pair.shiftJ) -
                                        shifted(p, candidates.beams[i], pair.shiftI));
  return {};
}

/// Why a candidate has no partner; none: it may have one.
std::optional<Fate> fateOf(const Neighbour& nearest, const MatchPoints& candidates,
                           const PartnerSearch& search, Correspondence& pair) {
  if (nearest.number == noPoint) return Fate::tooFar;
  if (!(nearest.square < infinite)) return Fate::taken;
  return examine(candidates, search, pair);
}

}  // namespace

PartnerSearch::PartnerSearch(const MatchPoints& points, const SearchRules& rules)
    : points_(points), rules_(rules) {
  for (std::uint8_t code = firstCode; code <= lastCode; ++code) {
    classes_.emplace_back(points.places(), numbersOf(code, points));
  }
}

Neighbour PartnerSearch::nearest(const point& place, std::uint8_t code,
                                 const vector& normal) const {
  const std::function<bool(std::uint32_t)> agrees = [&](std::uint32_t k) {
    return doAgree(normal, points_.normals[k], rules_);
  };
  Neighbour room{noPoint, infinite};
  Neighbours found({&room, 1}, rules_.radius, rules_.areFarApart ? &agrees : nullptr);
  classes_[static_cast<std::size_t>(code - firstCode)].search(place, found);
  return room;
}

PlaneFit PartnerSearch::planeAbout(std::size_t k) const {
  const std::vector<point>& places = points_.places();
  const PointTiles& ofClass = classes_[static_cast<std::size_t>(points_.codes[k] - firstCode)];
  GrowingPlane plane(
      {rules_.neighbours, rules_.neighbourRadius, rules_.mostNeighbours, rules_.roughest});
  return plane.about([&](Neighbours& nearest) { ofClass.search(places[k], nearest); },
                     [&](std::uint32_t number) { return places[number]; });
}

std::vector<Correspondence> searchPartners(const MatchPoints& candidates,
                                           const PartnerSearch& partners, CandidateTally& tally,
                                           const std::function<void(std::size_t)>& tell) {
  const auto nearest = nearestPartners(candidates, partners, tell);
  std::vector<Correspondence> pairs(candidates.size());
  std::vector<std::optional<Fate>> fates(candidates.size());
  forEachInParallel(0, pairs.size(), 64, [&](std::size_t k) {
    pairs[k].i = static_cast<std::uint32_t>(k);
    pairs[k].j = nearest[k].number;
    pairs[k].code = candidates.codes[k];
    fates[k] = fateOf(nearest[k], candidates, partners, pairs[k]);
  });
  std::size_t found = 0;
  for (std::size_t k = 0; k < pairs.size(); ++k) {
    tally.add(pairs[k]);
    if (fates[k]) {
      tally.judge(pairs[k], *fates[k]);
    } else {
      pairs[found++] = pairs[k];
    }
  }
  pairs.resize(found);
  return pairs;
}

}  // namespace Velorn::Flights
