// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>

#include <gtest/gtest.h>

#include "adjustment/engine/LocalPlaces.h"

using Velorn::LocalPlaces, Velorn::Vector3;

namespace {

Velorn::Projection utm() {
  return Velorn::projectionOf(Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(32632));
}

/// How often the place changes along a line.
int changes(LocalPlaces& places, const Vector3<double>& start, const Vector3<double>& step,
            const Vector3<double>& swing, int steps) {
  std::uint32_t last = places.near(start, LocalPlaces::none);
  int count = 0;
  for (int i = 0; i < steps; ++i) {
    const Vector3<double> at = start + i * step + (i % 2) * swing;
    const std::uint32_t place = places.near(at, last);
    EXPECT_LT((at - Vector3<double>(places[place]->polynomials.centre)).norm(), 800);
    count += place != last ? 1 : 0;
    last = place;
  }
  return count;
}

}  // namespace

TEST(LocalPlaces, ChangeSeldomAlsoAlongTheBorderOfCells) {
  LocalPlaces places(utm());
  const Vector3<double> border(512 * 1200, 512 * 10000, 512);
  EXPECT_LE(changes(places, border, {0, 10, 0}, {2, 0, -2}, 1000), 20);
  EXPECT_EQ(changes(places, border, {0, 0, 0}, {-2, -2, -2}, 100), 0);
}

TEST(LocalPlaces, AreTheSameForAllThatComeBy) {
  LocalPlaces places(utm());
  const auto first = places.near({600000, 5250000, 300}, LocalPlaces::none);
  const auto other = places.near({620000, 5250000, 300}, first);
  EXPECT_NE(other, first);
  EXPECT_EQ(places.near({600001, 5250001, 301}, other), first);
}

TEST(LocalPlaces, AreNoneOffTheZone) {
  LocalPlaces places(utm());
  const auto first = places.near({600000, 5250000, 300}, LocalPlaces::none);
  EXPECT_EQ(places.near({600000, 5250000, -20000}, first), LocalPlaces::none);
  EXPECT_EQ(places.near({std::nan(""), 5250000, 300}, first), LocalPlaces::none);
  EXPECT_EQ(places[LocalPlaces::none], nullptr);
}
