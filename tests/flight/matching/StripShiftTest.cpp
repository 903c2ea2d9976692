// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <random>

#include <gmock/gmock.h>

#include "flight/matching/StripShift.h"

using namespace Velorn::Flights;
using Geomra::PhysicalSpace::point;

namespace {

/// Level ground with houses of several sizes.
double heightAt(double x, double y) {
  const double column = std::floor(x / 31.0), row = std::floor(y / 27.0);
  const double within = std::fmod(x, 31.0), across = std::fmod(y, 27.0);
  const double size = 8.0 + std::fmod(7.0 * column + 5.0 * row, 9.0);
  const bool isHouse = std::fmod(3.0 * column + row, 4.0) < 2.0;
  return isHouse && within < size && across < size ? 4.0 + std::fmod(column + 2.0 * row, 5.0) : 0.0;
}

/// Points of 200 m by 160 m, somewhere else than they are.
std::vector<point> strip(unsigned seed, const point& moved, double tilt, bool isLevel = false) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> part(0.0, 1.0);
  std::normal_distribution<double> noise(0.0, 0.05);
  std::vector<point> points;
  for (int k = 0; k < 40'000; ++k) {
    const double x = 200.0 * part(random), y = 160.0 * part(random);
    const double height = (isLevel ? 0.0 : heightAt(x, y)) + tilt * x + noise(random);
    points.push_back({x + moved.x, y + moved.y, height + moved.z});
  }
  return points;
}

TEST(StripShift, IsFoundWithinACellWhateverTiltAndHeight) {
  constexpr double side = 2.0;
  const auto first = reliefOf(HeightGrid(strip(1, {}, 0.0), side));
  for (const point& moved : {point{}, point{12.0, -22.0, 3.5}, point{-31.0, 5.0, -0.7}}) {
    const HeightGrid second(strip(2, moved, 0.02), side);
    const auto shift = shiftBetween(first, second, 40.0);
    ASSERT_TRUE(shift);
    EXPECT_NEAR(shift->east, moved.x, side);
    EXPECT_NEAR(shift->north, moved.y, side);
    EXPECT_NEAR(shift->up, moved.z + 2.0, 1.0) << "the tilt lifts the middle by 2 m";
  }
}

TEST(StripShift, IsNoneInPlanOnLevelGround) {
  const auto first = reliefOf(HeightGrid(strip(1, {}, 0.0, true), 2.0));
  const HeightGrid second(strip(2, {6.0, 8.0, 1.0}, 0.0, true), 2.0);
  const auto shift = shiftBetween(first, second, 40.0);
  ASSERT_TRUE(shift);
  EXPECT_EQ(shift->east, 0.0);
  EXPECT_EQ(shift->north, 0.0);
  EXPECT_NEAR(shift->up, 1.0, 0.05);
}

TEST(StripShift, IsNotKnownWithoutSurfacesInCommon) {
  const HeightGrid first(strip(1, {}, 0.0), 2.0), none({}, 2.0);
  const auto relief = reliefOf(first);
  EXPECT_FALSE(shiftBetween(relief, HeightGrid(strip(2, {500.0, 0.0, 0.0}, 0.0), 2.0), 40.0));
  EXPECT_FALSE(shiftBetween(relief, none, 40.0));
  EXPECT_FALSE(shiftBetween(reliefOf(none), first, 40.0));
  const HeightGrid beside(strip(2, {200.0, 0.0, 0.0}, 0.0), 2.0);
  EXPECT_FALSE(shiftBetween(relief, beside, 100.0)) << "some shift of many always looks alike";
}

}  // namespace
