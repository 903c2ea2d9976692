// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <numeric>
#include <random>

#include <gmock/gmock.h>

#include "flight/surfaces/Cubes.h"

namespace {

using namespace Velorn::Flights;
using Geomra::PhysicalSpace::point;
using testing::ElementsAre;

std::vector<std::uint32_t> allOf(const std::vector<point>& points) {
  std::vector<std::uint32_t> numbers(points.size());
  std::iota(numbers.begin(), numbers.end(), 0U);
  return numbers;
}

TEST(Cubes, KeepThePointNearestTheirCentreOnEitherSideOfZero) {
  const std::vector<point> points{{-0.9, 5.1, 0.1},   // in the cube from -1 to 0
                                  {-0.6, 5.5, 0.5},   // the same, nearer its centre
                                  {0.1, 5.5, 0.5},    // another cube in x
                                  {-0.5, 5.5, -0.5},  // and in z: the same cell in plan
                                  {-0.5, 5.5, 0.5},   // no member
                                  {1e8, -1e8, 0.0}};
  EXPECT_THAT(onePerCube(points, std::vector<std::uint32_t>{0, 1, 2, 3, 5}, 1.0),
              ElementsAre(1, 2, 3, 5));
  EXPECT_TRUE(onePerCube({}, {}, 1.0).empty());
  const std::vector<point> equal{{0.25, 0.5, 0.5}, {0.75, 0.5, 0.5}};
  EXPECT_THAT(onePerCube(equal, allOf(equal), 1.0), ElementsAre(0)) << "the first of equals";
}

TEST(Spacing, IsThatOfAnAreaAndNotOfAScanLine) {
  std::mt19937_64 random(5);
  std::uniform_real_distribution<double> metre(0.0, 100.0);
  std::vector<point> even, lines;
  for (int k = 0; k < 40'000; ++k) {  // four points per square metre
    even.push_back({metre(random), metre(random), 0.0});
    lines.push_back({metre(random), std::round(metre(random)), 0.0});
  }
  EXPECT_NEAR(spacingOf(even, allOf(even), 5.0), 0.5, 0.05);
  EXPECT_NEAR(spacingOf(lines, allOf(lines), 5.0), 0.5, 0.15) << "some cm along a line, 1 m across";
  EXPECT_TRUE(std::isnan(spacingOf(even, allOf(even), 0.5))) << "three points within the radius";
  EXPECT_TRUE(std::isnan(spacingOf({}, {}, 5.0)));
}

}  // namespace
