// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cmath>

#include <gtest/gtest.h>

#include "flight/simulation/Random.h"
#include "flight/simulation/Terrain.h"
#include "platform/geomra/Degree.h"

namespace {

using namespace Velorn::Flights::Simulation;

using Geomra::degree;
const Extent smallArea{600'000.0, 600'399.0, 5'249'800.0, 5'250'199.0};

/// The plane that a place belongs to, found by asking all of them; the number of planes on a
/// border.
std::uint32_t planeAt(const Terrain& terrain, const point& place) {
  std::uint32_t i = 0;
  while (i < terrain.planes().size() && !terrain.belongs(i, place.x, place.y)) ++i;
  return i;
}

/// Where a segment first gets below the surface, step by step, and how far below it is there.
struct Walked {
  double along, depth;
  std::uint32_t plane;
};
Walked walk(const Terrain& terrain, const Segment& segment, double step) {
  for (double t = 0.0;; t += step) {
    const point place = segment.at(t);
    const std::uint32_t i = planeAt(terrain, place);
    if (i == terrain.planes().size()) continue;  // on a border
    const double depth = terrain.planes()[i].heightAt(place.x, place.y) - place.z;
    if (depth >= 0.0) return {t, depth, i};
  }
}

TEST(Terrain, ASegmentHitsWhatAWalkInSmallStepsMeetsFirst) {
  const Terrain terrain(smallArea, 3);
  Random random(5, Draw::terrain);
  int hits = 0, walls = 0, grazes = 0;
  for (int i = 0; i < 1500; ++i) {
    const point from{random.uniform(600'100.0, 600'300.0), random.uniform(5'249'900.0, 5'250'100.0),
                     terrain.highest() + 1.0};
    const double fall = terrain.highest() - terrain.lowest() + 2.0;
    const Segment segment{
        from, from + fall * vector{random.uniform(-0.8, 0.8), random.uniform(-0.8, 0.8), -1.0}};
    constexpr double step = 1e-3;
    const Walked walked = walk(terrain, segment, step);
    const auto hit = terrain.firstHit(segment);
    const vector d = segment.to - segment.from;
    const auto& plane = terrain.planes()[walked.plane];
    const double deepestInAStep = step * std::abs(dot(d, plane.normal)) / plane.normal.z;
    if (!hit) {  // through a wall: deeper below the surface at once than a step can lead
      ++(walked.depth > deepestInAStep ? walls : grazes);
      continue;
    }
    EXPECT_EQ(hit->plane, walked.plane) << i;
    EXPECT_NEAR(hit->along, walked.along, step) << i;
    EXPECT_LE(walked.depth, deepestInAStep * 1.001) << i;
    ++hits;
  }
  EXPECT_GT(hits, 1300);
  EXPECT_GT(walls, 20);
  EXPECT_LE(grazes, walls / 10);  // just below the eaves
}

TEST(Terrain, HoldsRoofsOfManyAzimuthsAndSlopesUpToFortyDegrees) {
  const Terrain terrain({600'000.0, 601'500.0, 5'249'000.0, 5'251'000.0}, 1);
  double steepest = 0.0;
  int beds = 0, flatRoofs = 0;
  std::array<int, 12> directions{};
  for (const Plane& plane : terrain.planes()) {
    EXPECT_NEAR(dot(plane.normal, plane.normal), 1.0, 1e-14);
    steepest = std::max(steepest, plane.slope());
    beds += plane.surface == Surface::bed ? 1 : 0;
    if (plane.surface != Surface::building) continue;
    if (plane.slope() == 0.0) {
      ++flatRoofs;
    } else {
      const double turns = plane.aspect() / (360.0 * degree) + 0.5;
      ++directions[std::min<std::size_t>(11, static_cast<std::size_t>(turns * 12.0))];
    }
  }
  EXPECT_LE(steepest, 40.0 * degree);
  EXPECT_GT(steepest, 39.0 * degree);
  EXPECT_GT(beds, 30);
  EXPECT_GT(flatRoofs, 50);
  EXPECT_GT(*std::min_element(directions.begin(), directions.end()), 20);
}

TEST(Terrain, WhatLiesAtAPlaceDoesNotDependOnTheExtent) {
  const Terrain terrain(smallArea, 3);
  const Terrain wider({599'000.0, 601'000.0, 5'249'000.0, 5'251'000.0}, 3);
  for (int i = 0; i < 10; ++i) {
    const point place{smallArea.west + 10.0 + 37.0 * i, 5'250'017.0, 0.0};
    const auto& one = terrain.planes()[planeAt(terrain, place)];
    const auto& other = wider.planes()[planeAt(wider, place)];
    EXPECT_EQ(one.through, other.through);
    EXPECT_EQ(one.normal, other.normal);
  }
}

}  // namespace
