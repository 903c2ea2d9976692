// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "platform/tessaly/PolarCoordinates.h"
#include "tests/platform/tessaly/Places.h"

using Geomra::PhysicalSpace::point;
using Tessaly::cartesianCoordinatesFromPolar, Tessaly::polarCoordinatesFromCartesian;

namespace {

constexpr double quarterTurn = std::numbers::pi / 2;
constexpr double largest = std::numeric_limits<double>::max();
constexpr double smallest = std::numeric_limits<double>::denorm_min();

}  // namespace

TEST(PolarCoordinates, AxesHaveTheAnglesOfTheDefinition) {
  EXPECT_EQ(polarCoordinatesFromCartesian({0, 0, 2}), (point{2, 0, 0}));
  EXPECT_EQ(polarCoordinatesFromCartesian({2, 0, 0}), (point{2, 0, quarterTurn}));
  EXPECT_EQ(polarCoordinatesFromCartesian({-2, 0, 0}), (point{2, 0, -quarterTurn}));
  EXPECT_EQ(polarCoordinatesFromCartesian({0, 2, 0}), (point{2, quarterTurn, 0}));
  EXPECT_EQ(polarCoordinatesFromCartesian({0, -2, 0}), (point{2, -quarterTurn, 0}));
  EXPECT_EQ(polarCoordinatesFromCartesian({0, 0, -2}), (point{2, 0, 2 * quarterTurn}));
}

TEST(PolarCoordinates, AgreeWithTheFormulaAndLeadBack) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> component(-1000, 1000);  // [m]
  for (int i = 0; i < 2000; ++i) {
    const point s{component(random), component(random), component(random)};
    const point q = polarCoordinatesFromCartesian(s);
    const double r = std::sqrt(s.x * s.x + s.y * s.y + s.z * s.z);
    EXPECT_NEAR(q.x, r, 1e-12);  // some ulps of 1000
    // The arcsine's own error grows with 1 / cos q1.
    EXPECT_NEAR(q.y, std::asin(s.y / r), 4e-16 / std::cos(q.y));
    EXPECT_EQ(q.z, std::atan2(s.x, s.z));
    EXPECT_LT(apart(s, cartesianCoordinatesFromPolar(q)), 2e-12) << "seed 1, point " << i;
  }
}

TEST(PolarCoordinates, KeepTheirDigitsBesideThePole) {
  // s1 / r rounds to one here; its arcsine would lose the 10 µm to the side.
  const point s{3e-6, 1000, -1e-5};
  EXPECT_LT(apart(s, cartesianCoordinatesFromPolar(polarCoordinatesFromCartesian(s))), 1e-12);
}

TEST(PolarCoordinates, OfTheZeroVectorAreZeroWhateverTheSigns) {
  for (const double s0 : {0.0, -0.0}) {
    for (const double s2 : {0.0, -0.0}) {
      EXPECT_EQ(polarCoordinatesFromCartesian({s0, -0.0, s2}), point{});
    }
  }
  EXPECT_EQ(cartesianCoordinatesFromPolar({0, 1, 2}), point{});
}

TEST(PolarCoordinates, NeitherOverflowNorUnderflowOnTheWay) {
  EXPECT_DOUBLE_EQ(polarCoordinatesFromCartesian({largest / 4, 0, largest / 4}).x,
                   largest / 4 * std::numbers::sqrt2);
  const point tiny = polarCoordinatesFromCartesian({0, 3 * smallest, 4 * smallest});
  EXPECT_EQ(tiny.x, 5 * smallest);
  EXPECT_DOUBLE_EQ(tiny.y, std::atan2(3, 4));
}

TEST(PolarCoordinates, OfNonFiniteInputAreNonFinite) {
  for (const double bad : {notANumber, infinity, -infinity}) {
    for (const double good : {0.0, 3.0}) {
      for (const point& p : {point{bad, good, good}, {good, bad, good}, {good, good, bad}}) {
        EXPECT_FALSE(std::isfinite(polarCoordinatesFromCartesian(p).x));
        EXPECT_FALSE(isFinite(cartesianCoordinatesFromPolar(p)));
      }
    }
  }
}
