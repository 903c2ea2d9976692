// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Polygons, trees and the search of partners, against slow and obvious twins.
#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "flight/matching/ControlTally.h"
#include "flight/matching/GroundTruth.h"
#include "flight/matching/PairSearch.h"
#include "flight/matching/PlanHull.h"
#include "flight/surfaces/PointTiles.h"

namespace {

using namespace Velorn::Flights;

TEST(PlanHull, HoldsItsPointsAndWhatIsNear) {
  const std::vector<point> square{{1e6, 5e6, 3},           {1e6 + 10, 5e6, 9},
                                  {1e6 + 10, 5e6 + 10, 0}, {1e6, 5e6 + 10, 1},
                                  {1e6 + 5, 5e6 + 5, 0},   {1e6, 5e6, 0}};
  const PlanHull hull(square);
  for (const point& p : square) EXPECT_TRUE(hull.holds(p, 1e-9));
  EXPECT_TRUE(hull.holds({1e6 - 0.9, 5e6 + 5, -100}, 1.0));
  EXPECT_FALSE(hull.holds({1e6 - 1.1, 5e6 + 5, 0}, 1.0));
  EXPECT_FALSE(PlanHull().holds({0, 0, 0}, 1e9));
  const PlanHull place(std::vector<point>{{1, 2, 3}, {1, 2, 4}});
  EXPECT_TRUE(place.holds({1.5, 2, 0}, 1.0));
  EXPECT_FALSE(place.holds({1.5, 3.1, 0}, 1.0));
  const PlanHull diagonal(std::vector<point>{{0, 0, 0}, {10, 10, 0}, {5, 5, 0}});
  EXPECT_TRUE(diagonal.holds({5, 6, 0}, 1.0));
  EXPECT_FALSE(diagonal.holds({3, 7, 0}, 1.0)) << "within its extent, but beside it";
}

TEST(PlanHull, IsApartFromAnotherByTheGapAlongItsSlantingSide) {
  const auto strip = [](double offset) {  // along the diagonal, beside it by the offset
    const double d = offset / std::sqrt(2.0), w = 1.0 / std::sqrt(2.0);
    return PlanHull(std::vector<point>{
        {d, -d, 0}, {100 + d, 100 - d, 0}, {d + w, -d - w, 0}, {100 + d + w, 100 - d - w, 0}});
  };
  EXPECT_FALSE(strip(0).isApartFrom(strip(0.5), 0.0));
  EXPECT_FALSE(strip(0).isApartFrom(strip(4.0), 3.1));
  EXPECT_TRUE(strip(0).isApartFrom(strip(4.0), 2.9));
  EXPECT_TRUE(strip(4).isApartFrom(strip(0.0), 2.9));
  EXPECT_TRUE(strip(0).isApartFrom(PlanHull(), 1e9));
}

std::vector<std::uint32_t> firstOf(std::size_t count) {
  std::vector<std::uint32_t> numbers(count);
  std::iota(numbers.begin(), numbers.end(), 0U);
  return numbers;
}

/// Squares of the distances to the nearest points, ascending.
std::vector<double> slowNearest(const std::vector<point>& points, const point& from,
                                std::size_t count, double radius) {
  std::vector<double> squares;
  for (const point& p : points) {
    if (const double square = dot(p - from, p - from); square <= radius * radius) {
      squares.push_back(square);
    }
  }
  std::sort(squares.begin(), squares.end());
  squares.resize(std::min(count, squares.size()));
  return squares;
}

TEST(PointTiles, FindTheSameAsLookingAtEveryPoint) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> metre(0.0, 100.0);
  std::vector<std::vector<point>> clouds(4);
  for (int k = 0; k < 30000; ++k) clouds[0].push_back({metre(random), metre(random), 1.0});
  for (int k = 0; k < 20000; ++k) {  // along a slanting line, and one point far away
    const double s = metre(random);
    clouds[1].push_back({s, 3 * s + 0.1 * metre(random), 0.02 * metre(random)});
  }
  clouds[1].push_back({1e6, -1e6, 0});
  clouds[2].assign(20000, {7, 7, 7});
  clouds[3] = {{1, 2, 3}};
  for (const auto& cloud : clouds) {
    const PointTiles tiles(cloud, firstOf(cloud.size()));
    for (int k = 0; k < 100; ++k) {
      const point from{1.4 * metre(random) - 20, 3 * metre(random), 0.05 * metre(random)};
      for (const double radius : {0.5, 8.0, 300.0}) {
        std::vector<Neighbour> room(9);
        Neighbours neighbours(room, radius);
        tiles.search(from, neighbours);
        std::vector<double> squares;
        for (const Neighbour& one : neighbours.found()) {
          const auto away = cloud[one.number] - from;
          ASSERT_NEAR(one.square, dot(away, away), 1e-9 * one.square);
          squares.push_back(one.square);
        }
        ASSERT_EQ(squares, slowNearest(cloud, from, room.size(), radius)) << "draw " << k;
      }
    }
  }
}

/// Points on gentle waves, of all four classes, with normals up to some degrees off.
MatchPoints waves(std::size_t count, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> metre(0.0, 40.0);
  std::normal_distribution<double> noise(0.0, 0.03);
  MatchPoints points;
  for (std::size_t k = 0; k < count; ++k) {
    const double x = metre(random), y = metre(random);
    points.delivered.push_back({x, y, std::sin(0.2 * x) + noise(random)});
    points.scanner.push_back({400, 3, 20});
    points.times.push_back(0.01 * double(k));
    const vector normal{noise(random) - 0.2 * std::cos(0.2 * x), noise(random), 1.0};
    points.normals.push_back((1.0 / lengthOf(normal)) * normal);
    points.beams.push_back({0.2, 0.1, 1.0});
    points.codes.push_back(std::uint8_t(firstCode + random() % 4));
    points.roughness.push_back(0.03);
    points.heights.push_back(noise(random));
  }
  return points;
}

MatchPoints flat(MatchPoints points) {
  points.codes.assign(points.size(), lastCode);
  points.normals.assign(points.size(), {0, 0, 1});
  for (point& place : points.delivered) place.z = 0.0;
  return points;
}

/// The point of J that is nearest to a candidate, by class.
std::optional<std::size_t> slowPartner(const MatchPoints& i, std::size_t k, const MatchPoints& j,
                                       double radius) {
  std::optional<std::size_t> best;
  double least = radius;
  for (std::size_t n = 0; n < j.size(); ++n) {
    const double distance = lengthOf(j.delivered[n] - i.delivered[k]);
    if (j.codes[n] != i.codes[k] || distance > least) continue;
    least = distance;
    best = n;
  }
  return best;
}

PlaneFit slowPlane(const MatchPoints& points, std::size_t k, const SearchRules& rules) {
  std::vector<point> about;
  for (std::size_t n = 0; n < points.size(); ++n) {
    if (points.codes[n] == points.codes[k]) about.push_back(points.delivered[n]);
  }
  const auto distance = [&](const point& p) { return lengthOf(p - points.delivered[k]); };
  std::sort(about.begin(), about.end(),
            [&](const point& a, const point& b) { return distance(a) < distance(b); });
  about.resize(rules.neighbours);
  std::erase_if(about, [&](const point& p) { return distance(p) > rules.neighbourRadius; });
  return planeThrough(about);
}

std::vector<Correspondence> partnersOf(const MatchPoints& i, const MatchPoints& j,
                                       const SearchRules& rules, CandidateTally& tally) {
  return searchPartners(i, PartnerSearch(j, rules), tally, [](std::size_t) {});
}

TEST(PairSearch, FindsThePartnersOfASlowTwin) {
  const MatchPoints i = waves(400, 1), j = waves(3000, 2);
  const SearchRules rules{1.5, std::cos(0.06), true, 12, 2.5};
  CandidateTally tally;
  const auto found = partnersOf(i, j, rules, tally);
  std::map<std::size_t, std::size_t> owner;  // of a point of J: the nearest candidate
  for (std::size_t k = 0; k < i.size(); ++k) {
    const auto partner = slowPartner(i, k, j, rules.radius);
    if (!partner) continue;
    const auto [held, isNew] = owner.emplace(*partner, k);
    const auto distance = [&](std::size_t n) {
      return lengthOf(j.delivered[*partner] - i.delivered[n]);
    };
    if (!isNew && distance(k) < distance(held->second)) held->second = k;
  }
  std::map<std::size_t, Correspondence> byCandidate;
  for (const Correspondence& one : found) byCandidate.emplace(one.i, one);
  std::size_t expected = 0;
  for (const auto& [n, k] : owner) {
    const PlaneFit plane = slowPlane(j, n, rules);
    if (dot(i.normals[k], j.normals[n]) < rules.cosine || !plane.exists()) continue;
    ++expected;
    ASSERT_TRUE(byCandidate.contains(k));
    const Correspondence& one = byCandidate.at(k);
    EXPECT_EQ(one.j, n);
    EXPECT_NEAR(one.roughnessJ, plane.roughness, 1e-12);
    // Both moved points lie on their planes, and the distance is that of these.
    const point p = shifted(i.delivered[k], i.beams[k], one.shiftI);
    const point q = shifted(j.delivered[n], j.beams[n], one.shiftJ);
    EXPECT_NEAR(dot(i.normals[k], p - i.delivered[k]), -i.heights[k], 1e-12);
    EXPECT_NEAR(plane.distanceOf(q), 0.0, 1e-12);
    EXPECT_NEAR(one.distance, dot(i.normals[k], q - p), 1e-12);
  }
  EXPECT_EQ(found.size(), expected);
  EXPECT_GT(expected, 50U);
  Funnel sum;
  for (const Funnel& one : tally.funnels()) sum += one;
  EXPECT_EQ(sum.candidates, i.size());
  EXPECT_EQ(sum.tooFar, i.size() - owner.size());
  EXPECT_EQ(sum.tooFar + sum.angle + sum.roughness + found.size(), i.size());
  EXPECT_GT(sum.angle, 10U);
}

TEST(PairSearch, OffersAPointToItsNearestCandidateAlone) {
  MatchPoints i = flat(waves(3, 1)), j = flat(waves(30, 2));
  j.delivered[0] = {20, 100, 0};
  i.delivered = {{20.5, 100, 0}, {20.2, 100, 0}, {20.3, 100, 0}};
  CandidateTally tally;
  const SearchRules rules{1.0, 0.99, true, 30, 500.0};
  const auto found = partnersOf(i, j, rules, tally);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].i, 1U);
  EXPECT_EQ(tally.funnels()[4].tooFar, 2U);
}

TEST(PairSearch, TakesTheNearestThatFacesTheSameWayWhereStripsAreFarApart) {
  MatchPoints i = flat(waves(2, 1)), j = flat(waves(31, 2));
  j.delivered[0] = {20, 100, 0};
  j.normals[0] = {1, 0, 0};  // a wall, nearer than the ground at 20, 102
  j.delivered[1] = {20, 102, 0};
  i.delivered = {{20, 100.1, 0}, {20, 100.2, 0}};
  CandidateTally tally;
  SearchRules rules{3.0, 0.99, true, 30, 500.0};
  EXPECT_TRUE(partnersOf(i, j, rules, tally).empty());
  rules.areFarApart = true;
  const auto found = partnersOf(i, j, rules, tally);
  ASSERT_EQ(found.size(), 2U);  // they share it
  EXPECT_EQ(found[0].j, 1U);
  EXPECT_EQ(found[1].j, 1U);
  rules.radius = 1.5;
  EXPECT_TRUE(partnersOf(i, j, rules, tally).empty());
}

TEST(PairSearch, AnswersForPointsInOnePlaceAndNormalsThatAreNone) {
  MatchPoints i = waves(50, 1), j = waves(50, 2);
  j.delivered.assign(50, i.delivered[0]);
  i.normals[0] = {0, 0, std::numeric_limits<double>::quiet_NaN()};
  i.normals[1] = {0, 0, 0};
  CandidateTally tally;
  const SearchRules rules{100.0, -1.0, true, 16, 5.0};
  EXPECT_TRUE(partnersOf(i, j, rules, tally).empty());
  const MatchPoints nothing;
  EXPECT_TRUE(partnersOf(i, nothing, rules, tally).empty());
  EXPECT_TRUE(partnersOf(nothing, j, rules, tally).empty());
}

/// Points 1 m apart in squares of 4 × 4, on inclined planes.
KnownPoints patchesAt(const std::vector<point>& corners, const vector& normal) {
  KnownPoints known;
  for (const point& corner : corners) {
    for (int k = 0; k < 16; ++k) {
      const int column = k % 4, row = k / 4;
      const double x = column, y = row;
      known.places.push_back(corner + vector{x, y, -(normal.x * x + normal.y * y) / normal.z});
      known.normals.push_back(normal);
      known.codes.push_back(12);
    }
  }
  return known;
}

TEST(GroundTruth, KnowsItsSpacingAndItsPatches) {
  const GroundTruth known(patchesAt({{0, 0, 0}, {50, 0, 0}, {5.9, 0, 0}}, {0, 0, 1}));
  EXPECT_DOUBLE_EQ(known.spacing(), 1.0);
  EXPECT_EQ(known.patchOf(0), known.patchOf(15));
  EXPECT_EQ(known.patchOf(0), known.patchOf(40)) << "2.9 m apart";
  EXPECT_EQ(known.patchOf(20), 1U) << "in the order of the file";
  EXPECT_EQ(known.patches(), 2U);
  EXPECT_TRUE(known.isNear({-3, 0, 1000}, 3.0));
  EXPECT_FALSE(known.isNear({-3.1, 0, 0}, 3.0));
  EXPECT_DOUBLE_EQ(GroundTruth(KnownPoints{{{1, 2, 3}}, {{0, 0, 1}}, {14}}).spacing(), 0.0);
}

TEST(GroundTruth, IsMatchedBesideItsPointsByNoMoreThanTheirSpacing) {
  const vector normal = (1.0 / std::sqrt(1.25)) * vector{0.5, 0.0, 1.0};
  const GroundTruth known(patchesAt({{0, 0, 100}}, normal));
  MatchPoints strip;
  for (int k = 0; k < 900; ++k) {  // 0.3 m above the plane, far beyond the patch
    const int column = k % 30, row = k / 30;
    const double x = 0.37 * column - 4, y = 0.37 * row - 4;
    strip.delivered.push_back(point{x, y, 100 - 0.5 * x} + 0.3 * normal);
  }
  strip.beams.assign(900, {0, 0, 500});
  strip.codes.assign(900, 12);
  CandidateTally tally;
  const SearchRules rules{3.0, std::cos(0.05), true, 16, 5.0};
  const PartnerSearch search(strip, rules);
  ControlTally items(known);
  const auto found =
      searchGroundTruth(search, known, rules.radius, tally, items, [](std::size_t) {});
  for (const Correspondence& one : found) {
    EXPECT_NEAR(one.distance, -0.3, 1e-9);
    EXPECT_EQ(one.code, 10);
    EXPECT_EQ(one.normalI, normal);
  }
  std::size_t within = 0, candidates = 0;
  for (const point& place : strip.delivered) {
    const auto squares = slowNearest(known.points().places, place, 1, rules.radius);
    candidates += squares.size();
    within += !squares.empty() && squares[0] - 0.09 <= 1.0 ? 1 : 0;
  }
  EXPECT_EQ(found.size(), within);
  EXPECT_EQ(tally.funnels()[0].candidates, candidates);
  EXPECT_EQ(tally.funnels()[0].tooFar, candidates - within);
  EXPECT_EQ(items.items().at(0).beside, candidates - within);
  const SearchRules strict{3.0, std::cos(0.4), true, 16, 5.0};
  const GroundTruth flat(patchesAt({{0, 0, 100}}, {0, 0, 1}));
  ControlTally turned(flat);
  EXPECT_TRUE(searchGroundTruth(PartnerSearch(strip, strict), flat, rules.radius, tally, turned,
                                [](std::size_t) {})
                  .empty());
  EXPECT_EQ(turned.items()[0].leftOut, "the surface is turned away");
}

}  // namespace
