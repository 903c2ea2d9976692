// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "flight/surfaces/PlaneFit.h"

namespace {

using namespace Velorn::Flights;

/// Points about a projected place on z = 450 + 0.4 x - 0.3 y, with noise in the height.
std::vector<point> onPlane(std::size_t count, double noise, double across = 3.0) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(-3.0, 3.0);
  std::normal_distribution<double> error;
  std::vector<point> points;
  for (std::size_t i = 0; i < count; ++i) {
    const double x = place(random), y = place(random) * across / 3.0;
    points.push_back(
        {600000.0 + x, 5250000.0 + y, 450.0 + 0.4 * x - 0.3 * y + noise * error(random)});
  }
  return points;
}

TEST(PlaneFit, OfExactPointsIsTheirPlaneAlsoFarFromTheOrigin) {
  const auto fit = planeThrough(onPlane(16, 0.0));
  ASSERT_TRUE(fit.exists());
  const double length = std::hypot(0.4, -0.3, 1.0);
  EXPECT_NEAR(fit.normal.x, -0.4 / length, 1e-7);
  EXPECT_NEAR(fit.normal.y, 0.3 / length, 1e-7);
  EXPECT_NEAR(fit.normal.z, 1.0 / length, 1e-7);
  EXPECT_LT(fit.roughness, 1e-7);
  EXPECT_NEAR(fit.distanceOf({600000.0, 5250000.0, 451.0}), 1.0 / length, 1e-6);
}

TEST(PlaneFit, SaysTheNoiseWithoutBias) {
  double sum = 0.0;
  constexpr int trials = 400;
  const auto many = onPlane(trials * 10, 0.02);
  for (int i = 0; i < trials; ++i) {
    const auto fit = planeThrough(std::span(many).subspan(static_cast<std::size_t>(i) * 10, 10));
    ASSERT_TRUE(fit.exists());
    sum += fit.roughness * fit.roughness;
  }
  const double along = 0.02 / std::hypot(0.4, -0.3, 1.0);
  EXPECT_NEAR(std::sqrt(sum / trials), along, 0.05 * along);
}

TEST(PlaneFit, DoesNotExistForFewPointsALineAndABall) {
  EXPECT_FALSE(planeThrough({}).exists());
  EXPECT_FALSE(planeThrough(onPlane(fewestForPlane - 1, 0.02)).exists());
  EXPECT_FALSE(planeThrough(onPlane(16, 0.0, 0.05)).exists());
  EXPECT_FALSE(planeThrough(onPlane(16, 5.0)).exists());
  EXPECT_FALSE(planeThrough(std::vector<point>(16, {1.0, 2.0, 3.0})).exists());
}

}  // namespace
