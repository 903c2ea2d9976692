// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <stdexcept>

#include <gmock/gmock.h>
#include <omp.h>

#include "flight/surfaces/Cubes.h"
#include "flight/surfaces/PlaneFit.h"
#include "flight/surfaces/Representatives.h"
#include "flight/surfaces/RoughnessLimit.h"
#include "flight/surfaces/Surface.h"
#include "flight/surfaces/TerrainClasses.h"
#include "flight/surfaces/Tiles.h"
#include "platform/geomra/Degree.h"

namespace {

using namespace Velorn::Flights;
using Geomra::degree;
using testing::ElementsAre;

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
  constexpr std::size_t trials = 400;
  const auto many = onPlane(trials * 10, 0.02);
  for (std::size_t i = 0; i < trials; ++i) {
    const auto fit = planeThrough(std::span(many).subspan(i * 10, 10));
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

constexpr double east = 600000.0, north = 5250000.0;

/// Points of two clouds over several tiles, with gaps, a dense spot and a far outlier.
struct Scene {
  std::vector<point> points;
  std::vector<Cloud> clouds;

  explicit Scene(std::size_t count = 4000) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> place(0.0, 60.0);
    std::normal_distribution<double> noise(0.0, 0.02);
    for (std::size_t i = 0; i < count; ++i) {
      const double x = i % 7 == 0 ? 30.0 + noise(random) * 40 : place(random), y = place(random);
      points.push_back({east + x, north + y, 400.0 + 0.3 * x + noise(random)});
      clouds.push_back(i % 5 == 0 ? Cloud::notLast : i % 31 == 0 ? Cloud::leftOut : Cloud::last);
    }
    points.push_back({-9e8, 9e8, 0.0});
    clouds.push_back(Cloud::last);
  }
};

constexpr auto nothing = [](std::size_t) {};

/// The slow and obvious way.
PlaneFit planeByLooking(const Scene& scene, std::size_t i, const Neighbourhood& about) {
  std::vector<std::pair<double, std::size_t>> byDistance;
  for (std::size_t j = 0; j < scene.points.size(); ++j) {
    const auto d = scene.points[j] - scene.points[i];
    if (scene.clouds[j] == scene.clouds[i] && dot(d, d) <= about.radius * about.radius) {
      byDistance.emplace_back(dot(d, d), j);
    }
  }
  std::sort(byDistance.begin(), byDistance.end());
  byDistance.resize(std::min<std::size_t>(byDistance.size(), about.points));
  std::vector<point> neighbours;
  neighbours.reserve(byDistance.size());
  for (const auto& [square, j] : byDistance) neighbours.push_back(scene.points[j]);
  return planeThrough(neighbours);
}

TEST(Surface, IsThePlaneThroughTheNearestPointsOfTheSameCloud) {
  const Scene scene;
  const Neighbourhood about{12, 1.5};  // tiles of 12 m, so that many neighbours are in the next one
  const Surface surface = surfaceOf(scene.points, scene.clouds, about, nothing);
  std::size_t planes = 0;
  for (std::size_t i = 0; i < scene.points.size(); ++i) {
    if (scene.clouds[i] == Cloud::leftOut) {
      EXPECT_TRUE(std::isnan(surface.roughness[i]));
      EXPECT_EQ(surface.normals[i], vector{});
      continue;
    }
    const PlaneFit plane = planeByLooking(scene, i, about);
    ASSERT_EQ(plane.exists(), !std::isnan(surface.roughness[i])) << i;
    EXPECT_EQ(surface.normals[i], plane.normal) << i;
    if (!plane.exists()) continue;
    ++planes;
    EXPECT_FLOAT_EQ(surface.roughness[i], static_cast<float>(plane.roughness));
    EXPECT_FLOAT_EQ(surface.distance[i], static_cast<float>(plane.distanceOf(scene.points[i])));
  }
  EXPECT_GT(planes, 2000U);
}

TEST(Surface, IsTheSameForAnyNumberOfThreadsAlsoWithEqualDistances) {
  std::vector<point> lattice;
  for (int i = 0; i < 150; ++i) {
    for (int j = 0; j < 150; ++j) lattice.push_back({0.5 * i, 0.5 * j, 0.25 * ((i * j) % 3)});
  }
  const std::vector<Cloud> clouds(lattice.size(), Cloud::last);
  const int before = omp_get_max_threads();
  omp_set_num_threads(1);
  const Surface one = surfaceOf(lattice, clouds, {16, 1.2}, nothing);
  omp_set_num_threads(5);
  const Surface five = surfaceOf(lattice, clouds, {16, 1.2}, nothing);
  omp_set_num_threads(before);
  EXPECT_EQ(one.normals, five.normals);
}

TEST(Surface, OfManyPointsAtOnePlaceDoesNotTakeTheirSquare) {
  Scene scene(2000);
  const point pile = scene.points[100];
  scene.points.insert(scene.points.end(), 200'000, pile);
  scene.clouds.resize(scene.points.size(), Cloud::last);
  const Surface surface = surfaceOf(scene.points, scene.clouds, {16, 5.0}, nothing);
  EXPECT_TRUE(std::isnan(surface.roughness.back()));
  EXPECT_FALSE(std::isnan(surface.roughness[1]));
}

TEST(Surface, PassesOnWhatTheListenerThrows) {
  const Scene scene;
  EXPECT_THROW(surfaceOf(scene.points, scene.clouds, {12, 1.5},
                         [](std::size_t) { throw std::runtime_error("enough"); }),
               std::runtime_error);
}

TEST(RoughnessLimit, FollowsThePlacesAbout) {
  RoughnessLimit limit(0.1F);
  for (int i = 0; i < 100; ++i) {
    limit.add({1.0 * (i % 50), 0, 0}, 0.02F);
    limit.add({100.0 + i % 50, 0, 0}, i < 60 ? 0.08F : 5.0F);
    limit.add({200.0 + i % 50, 0, 0}, 1e-6F);
  }
  limit.add({300, 0, 0}, 0.02F);
  limit.settle();
  EXPECT_FLOAT_EQ(limit.at({20, 20, 0}), 0.05F);
  EXPECT_FLOAT_EQ(limit.at({120, 20, 0}), 0.1F);
  EXPECT_FLOAT_EQ(limit.at({220, 20, 0}), 0.01F);
  EXPECT_FLOAT_EQ(limit.at({300, 0, 0}), 0.1F);  // one plane says nothing
  EXPECT_FLOAT_EQ(limit.at({999, 0, 0}), 0.1F);
}

TEST(Surface, OfNoPointsIsEmpty) {
  EXPECT_TRUE(surfaceOf({}, {}, {}, nothing).normals.empty());
}

TEST(Representatives, AreNearestTheCentroidsOfTheirCells) {
  // Cells of 10 m about 0, also on its negative side; the centroid of the first three is (4, 4).
  const std::vector<point> points{{1, 1, 0},  {2, 2, 0},   {9, 9, 0},  {-1, 5, 0},
                                  {50, 5, 0}, {-3, 5, 99}, {-2, 5, 0}, {1, 1, 0}};
  const std::vector<std::uint32_t> members{0, 1, 2, 3, 5, 6};
  EXPECT_EQ(representatives(points, members, 10.0), (std::vector<std::uint32_t>{1, 6}));
  EXPECT_EQ(representatives(points, std::vector<std::uint32_t>{0, 7}, 10.0),
            std::vector<std::uint32_t>{0});
  EXPECT_TRUE(representatives(points, {}, 10.0).empty());
}

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

constexpr std::uint8_t roof = 11, slope = 12, bed = 13, flat = 14;

vector tilted(double degrees) {
  return {-std::sin(degrees * degree), 0.0, std::cos(degrees * degree)};  // rises to the east
}

std::uint8_t codeOfLas(int lasClass, double degrees) {
  return terrainClass(kindOf(static_cast<std::uint8_t>(lasClass)), {0, 0, 0}, tilted(degrees), {},
                      std::cos(3.0 * degree));
}

TEST(TerrainClasses, FollowTheFilesClassesAndTheSlope) {
  EXPECT_EQ(codeOfLas(6, 0), roof);
  EXPECT_EQ(codeOfLas(40, 20), bed);
  for (const int ground : {2, 8, 11, 0, 1, 12}) {
    EXPECT_EQ(codeOfLas(ground, 2.9), flat) << ground;
    EXPECT_EQ(codeOfLas(ground, 3.1), slope) << ground;
  }
  for (const int none : {3, 4, 5, 7, 9, 13, 14, 15, 16, 18, 41, 45}) {
    EXPECT_EQ(codeOfLas(none, 0), noTerrain) << none;
  }
}

/// Ground that rises to the east, every metre.
LowestGround hill(double degrees) {
  LowestGround ground;
  for (int x = -60; x <= 60; ++x) {
    for (int y = -60; y <= 60; ++y) {
      ground.add({1.0 * x, 1.0 * y, x * std::tan(degrees * degree)});
    }
  }
  return ground;
}

TEST(TerrainClasses, TakeWhatIsHighAboveTheGroundForRoofs) {
  const LowestGround flatGround = hill(0.0);
  EXPECT_TRUE(flatGround.isFarBelow({7, 7, 3.0}, tilted(0.0)));
  EXPECT_FALSE(flatGround.isFarBelow({7, 7, 2.0}, tilted(0.0)));
  EXPECT_TRUE(flatGround.isFarBelow({7, 7, 6.0}, tilted(35.0)));
  EXPECT_FALSE(LowestGround().isFarBelow({7, 7, 6.0}, tilted(0.0)));
}

TEST(TerrainClasses, LeaveAHillsideWhatItIs) {
  const LowestGround ground = hill(30.0);
  EXPECT_FALSE(ground.isFarBelow({7, 7, 7 * std::tan(30.0 * degree)}, tilted(30.0)));
  EXPECT_TRUE(ground.isFarBelow({7, 7, 5 + 7 * std::tan(30.0 * degree)}, tilted(0.0)));
}

}  // namespace
