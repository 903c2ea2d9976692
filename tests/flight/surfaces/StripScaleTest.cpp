// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include <gmock/gmock.h>

#include "flight/surfaces/StripScale.h"
#include "flight/surfaces/Surface.h"
#include "platform/geomra/Degree.h"

namespace {

using namespace Velorn::Flights;
using Geomra::degree;

/// Noisy points of z = height(x) over a square, evenly spread with a density.
template <typename Height>
std::vector<point> cloud(double side, double perSquareMetre, double noise, const Height& height) {
  std::mt19937 random(11);
  std::uniform_real_distribution<double> place(0.0, side);
  std::normal_distribution<double> error(0.0, noise);
  std::vector<point> points;
  const auto count = static_cast<std::size_t>(side * side * perSquareMetre);
  for (std::size_t i = 0; i < count; ++i) {
    const double x = place(random), y = place(random);
    points.push_back({600000.0 + x, 5250000.0 + y, 450.0 + height(x) + error(random)});
  }
  return points;
}

std::vector<std::uint32_t> everyOne(const std::vector<point>& points) {
  std::vector<std::uint32_t> numbers(points.size());
  std::iota(numbers.begin(), numbers.end(), 0U);
  return numbers;
}

Surface planesOf(const std::vector<point>& points, const Neighbourhood& neighbourhood) {
  const std::vector<Cloud> clouds(points.size(), Cloud::last);
  return surfaceOf(points, clouds, neighbourhood, [](std::size_t) {});
}

constexpr Neighbourhood growing{16, 1.0, 256, 0.05};

TEST(StripScale, FindsSpacingAndNoiseAmongVegetation) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> leaf(0.0, 6.0);
  for (const auto& [side, density, noise] :
       {std::array{1000.0, 0.1, 0.02}, {100.0, 8.0, 0.03}, {8.0, 2000.0, 0.02}}) {
    const double wood = 0.25 * side;
    const auto points = cloud(side, density, noise,
                              [&](double x) { return 0.1 * x + (x < wood ? leaf(random) : 0.0); });
    const StripScale scale = scaleOf(points, everyOne(points));
    EXPECT_NEAR(scale.noise, noise * std::cos(std::atan(0.1)), 0.1 * noise) << density;
    EXPECT_NEAR(scale.spacing * std::sqrt(density), 1.05, 0.25) << density;
  }
  EXPECT_TRUE(std::isnan(scaleOf({}, {}).spacing));
}

TEST(StripScale, GivesOrdinaryFlightsTheStandardLengthsAndOthersTheirOwn) {
  const WorkLengths standard;
  for (const double spacing : {0.3, 0.4, 0.5}) {
    const auto lengths = lengthsFor({spacing, 0.02, 3'000'000});
    EXPECT_EQ(lengths.cell, standard.cell);
    EXPECT_DOUBLE_EQ(lengths.searchRadius, standard.searchRadius);
    EXPECT_DOUBLE_EQ(lengths.neighbourRadius, standard.neighbourRadius);
    EXPECT_DOUBLE_EQ(lengths.maxRoughness, standard.maxRoughness);
  }
  const auto dense = lengthsFor({0.02, 0.02, 2'000'000}), sparse = lengthsFor({1.0, 0.05, 900'000});
  EXPECT_LT(dense.cell, 0.05);
  EXPECT_LT(dense.largestCell, 1.0);
  EXPECT_GT(sparse.searchRadius, standard.searchRadius);
  EXPECT_EQ(sparse.cell, standard.cell);
  EXPECT_GT(sparse.maxRoughness, standard.maxRoughness);
  EXPECT_EQ(lengthsFor({}).searchRadius, standard.searchRadius);
}

TEST(GrowingPlane, KnowsTheNormalsOfADenseNoisyCloud) {
  const double slope = std::atan(0.3);
  const auto points = cloud(3.0, 2000.0, 0.02, [](double x) { return 0.3 * x; });
  const auto error = [&](const Surface& surface) {
    std::vector<double> angles;
    for (std::size_t i = 0; i < points.size(); ++i) {
      const double x = points[i].x - 600000.0, y = points[i].y - 5250000.0;
      if (std::min({x, y, 3.0 - x, 3.0 - y}) < 0.3) continue;
      const auto& n = surface.normals[i];
      const double cosine = n.z * std::cos(slope) - n.x * std::sin(slope);
      angles.push_back(std::acos(std::clamp(cosine, -1.0, 1.0)));
    }
    std::nth_element(angles.begin(), angles.begin() + static_cast<long>(angles.size() / 2),
                     angles.end());
    return angles[angles.size() / 2] / degree;
  };
  EXPECT_LT(error(planesOf(points, growing)), 1.0);
  EXPECT_GT(error(planesOf(points, {16, 1.0, 0, 0.05})), 10.0);
}

TEST(GrowingPlane, StopsAtAnEdge) {
  const auto gable = [](double x) { return 0.7 * std::min(x, 4.0 - x); };
  const auto points = cloud(4.0, 500.0, 0.01, gable);
  const Surface surface = planesOf(points, {16, 1.0, 256, 0.025});
  std::size_t right = 0, wrong = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double fromRidge = points[i].x - 600002.0;
    if (std::abs(fromRidge) < 0.15 || std::abs(fromRidge) > 0.5) continue;
    if (!(surface.roughness[i] <= 0.025F)) continue;
    const double expected = std::copysign(std::sin(std::atan(0.7)), fromRidge);
    ++(std::abs(surface.normals[i].x - expected) < std::sin(4.0 * degree) ? right : wrong);
  }
  EXPECT_GT(right, 1000);
  EXPECT_LT(wrong, right / 50);
}

TEST(GrowingPlane, KeepsThePlanesOfFewPointsWhereTheyTellTheNormal) {
  const auto points = cloud(40.0, 4.0, 0.02, [](double x) { return 0.1 * x; });
  const Surface fixed = planesOf(points, {16, 5.0, 0, 0.05}),
                grown = planesOf(points, {16, 5.0, 256, 0.05});
  std::size_t same = 0;
  for (std::size_t i = 0; i < points.size(); ++i) same += fixed.roughness[i] == grown.roughness[i];
  EXPECT_GT(same, points.size() * 9 / 10);
}

}  // namespace
