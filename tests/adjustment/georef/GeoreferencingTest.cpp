// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <limits>
#include <numeric>
#include <string>

#include <gmock/gmock.h>
#include <omp.h>

#include "tests/adjustment/georef/PointByPoint.h"
#include "tests/support/ConsoleLines.h"

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using testing::HasSubstr;
using Velorn::SolverParameters, Velorn::Trajectory;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double exact = 1e-8;  // [m]

double length(const vector& v) {
  return std::sqrt(dot(v, v));
}

double worstError(const Points& points, const Trajectory& trajectory,
                  const std::vector<int>& starts, const std::vector<double>& values) {
  double worst = 0;
  const std::size_t step = points.times.size() / 400;  // the twin is slow
  for (std::size_t i = 0; i < points.times.size(); i += step) {
    const auto& w = points.world[i];
    const ExactCase given(trajectory, starts, values, points.scanner[i], points.times[i]);
    const auto exactPoint =
        Exact::worldPoint(given.measurement, given.unknowns, trajectory.getMercator());
    worst = std::max(worst, apart(Velorn::Vector3<double>(w.x, w.y, w.z), exactPoint));
  }
  return worst;
}

class Georeferencing : public testing::Test {
 protected:
  Route route;
  Trajectory trajectory = trajectoryOf(route);
  std::vector<int> starts{400000, 400007};
  std::vector<double> corrections = someCorrections(2);
  SolverParameters parameters = restoredModel(starts, corrections);
  ConsoleLines console;
};

}  // namespace

struct Flown {
  std::string name;
  Route route;
  std::size_t points;
  bool scaledAngles;
};

class FlownStrip : public testing::TestWithParam<Flown> {};

TEST_P(FlownStrip, HasTheWorldPointsOfTheExactTwinAndOfThePlatformsOperations) {
  const auto& [name, route, count, scaledAngles] = GetParam();
  const auto trajectory = trajectoryOf(route);
  const std::vector<int> starts{400000, 400007, 400011};
  const auto values = someCorrections(starts.size(), scaledAngles);
  const auto parameters = restoredModel(starts, values);
  Points points(route, count);
  EXPECT_EQ(points.georeference(parameters, trajectory), "");
  EXPECT_LT(worstError(points, trajectory, starts, values), exact);
  EXPECT_LT(worstDifference(points, {parameters, trajectory, week, 0, false}), betweenTwoWays);
}

INSTANTIATE_TEST_SUITE_P(
    Routes, FlownStrip,
    testing::Values(Flown{"Dense", {}, 20000, true}, Flown{"OffsetsOnly", {}, 8000, false},
                    Flown{"Sparse", {}, 3000, true},
                    Flown{"FarNorthAtTheZonesEdge", {535000, 9.3e6, 4900}, 8000, true},
                    Flown{"EquatorAtTheZonesEdge", {888000, 100, 300}, 8000, true},
                    Flown{"OneRecordPerSecond", {.rate = 1}, 8000, true},
                    Flown{"FastWithOneRecordPerSecond", {.speed = 250, .rate = 1}, 2000, true},
                    Flown{
                        "DroneAtTwentyMetres", {.height = 20, .speed = 5, .rate = 50}, 8000, true}),
    [](const auto& flown) { return flown.param.name; });

TEST_F(Georeferencing, GivesTheSameBitsInAnyOrderAndWhereverAThreadBegins) {
  const std::size_t count = 20'000;  // many between two records of the trajectory
  const int threads = omp_get_max_threads();
  omp_set_num_threads(1);
  Points alone(route, count);
  alone.scanner[777] = {9000, 0, 0};  // farther than frames reach
  alone.georeference(parameters, trajectory);
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), 0);
  for (int with = 1; with < 12; ++with) {
    omp_set_num_threads(with);
    Points other(count);
    for (std::size_t i = 0; i < count; ++i) {
      other.scanner[i] = alone.scanner[order[i]];
      other.times[i] = alone.times[order[i]];
    }
    other.georeference(parameters, trajectory);
    std::size_t different = 0;
    for (std::size_t i = 0; i < count; ++i) {
      const bool isSame = other.world[i] == alone.world[order[i]] &&
                          other.directions[i] == alone.directions[order[i]];
      different += isSame ? 0 : 1;
    }
    EXPECT_EQ(different, 0U) << with;
    if (with % 2 == 0) std::shuffle(order.begin(), order.end(), std::mt19937_64(1));
  }
  omp_set_num_threads(threads);
}

TEST_F(Georeferencing, ComputesPointByPointWhatIsTooThinForFrames) {
  const Velorn::StripModel model(parameters, trajectory, week, 0, false);
  const auto alike = [&](std::size_t count, std::size_t together) {  // at the strip's beginning
    Points points(route, count);
    for (std::size_t i = 0; i < together; ++i)
      points.times[i] = 400001 + 1e-3 * static_cast<double>(i);
    points.georeference(parameters, trajectory);
    std::size_t same = 0;
    for (std::size_t i = 0; i < count; ++i) {
      same += points.world[i] == model.georeference(points.scanner[i], points.times[i]).world;
    }
    return same;
  };
  EXPECT_EQ(alike(150, 0), 150U);  // over 20 s
  EXPECT_LT(alike(250, 0), 125U);
  EXPECT_EQ(alike(60, 60), 60U);
  EXPECT_LT(alike(80, 80), 40U);
}

TEST_F(Georeferencing, GoesBackWithTheSameBitsInAnyOrderAndWhereverAThreadBegins) {
  const std::size_t count = 20'000;
  Points points(route, count);
  points.georeference(parameters, trajectory);
  const auto back = [&](int with) {
    const int threads = omp_get_max_threads();
    omp_set_num_threads(with);
    std::vector<point> scanner(count);
    EXPECT_EQ(
        Velorn::world2scanner(parameters, trajectory, scanner, points.times, week, 0, points.world),
        "");
    omp_set_num_threads(threads);
    return scanner;
  };
  auto alone = back(1);
  EXPECT_EQ(back(2), alone);
  EXPECT_EQ(back(3), alone);
  std::reverse(points.times.begin(), points.times.end());
  std::reverse(points.world.begin(), points.world.end());
  std::reverse(alone.begin(), alone.end());
  EXPECT_EQ(back(2), alone);
}

TEST_F(Georeferencing, StoresTheVectorToTheSensorWholeOrWithTheLengthAskedFor) {
  Points whole(route, 500), unit(route, 500), reversed(route, 500);
  whole.georeference(parameters, trajectory);
  unit.georeference(parameters, trajectory, 0.15);
  reversed.georeference(parameters, trajectory, -2.0);
  for (std::size_t i = 0; i < 500; ++i) {
    const vector d = whole.directions[i];
    EXPECT_NEAR(length(unit.directions[i] - 0.15 / length(d) * d), 0, 1e-15);
    EXPECT_NEAR(length(reversed.directions[i] + 2.0 / length(d) * d), 0, 1e-15);
    EXPECT_GT(d.z, 100);  // up to the aircraft
  }
}

TEST_F(Georeferencing, ComputesAPointOutsideEverySectionWithoutCorrections) {
  std::vector<double> values = corrections;
  std::fill(values.end() - 12, values.end(), 0.0);
  const auto late = restoredModel({400005, 400007}, values);
  const auto none = restoredModel({400000}, std::vector<double>(36));
  Points points(route, 2000), uncorrected(route, 2000);
  EXPECT_EQ(points.georeference(late, trajectory), "Error in scanner2world: Code: 2");
  uncorrected.georeference(none, trajectory);
  std::size_t before = 0, different = 0;
  for (std::size_t i = 0; i < 2000; ++i) {
    const double d = length(points.world[i] - uncorrected.world[i]);
    if (points.times[i] < 400005) {
      ++before;
      EXPECT_LT(d, betweenTwoWays);
    } else if (d > 0.01) {
      ++different;
    }
  }
  EXPECT_EQ(before, 500U);
  EXPECT_GT(different, 1400U);
  EXPECT_EQ(console.size(), before);
}

TEST_F(Georeferencing, ReportsWhatIsNotFiniteAndComputesTheOthers) {
  Points good(route, 4000), bad(route, 4000);
  good.georeference(parameters, trajectory);
  bad.scanner[7] = {notANumber, 0, 0};
  bad.scanner[1008] = {600, std::numeric_limits<double>::infinity(), 0};
  EXPECT_EQ(bad.georeference(parameters, trajectory), "Error in scanner2world: Code: 3");
  for (std::size_t i = 0; i < 4000; ++i) {
    if (i == 7 || i == 1008) {
      EXPECT_FALSE(std::isfinite(bad.world[i].x));
    } else {
      ASSERT_LT(length(bad.world[i] - good.world[i]), betweenTwoWays) << i;
    }
  }
}

TEST_F(Georeferencing, TellsATimeBeforeTheTrajectoryOnlyWhenAsked) {
  Points points(route, 100);
  points.times[0] = 400000;  // the first record itself
  EXPECT_EQ(points.georeference(parameters, trajectory), "");
  EXPECT_TRUE(console.empty());
  const point silent = points.world[0];
  EXPECT_EQ(points.georeference(parameters, trajectory, 0, true),
            "Error in scanner2world: Code: 1");
  EXPECT_EQ(console.size(), 1U);
  EXPECT_EQ(points.world[0], silent);
}

TEST_F(Georeferencing, LivesThroughBadTimesOnFourThreads) {
  const int threads = omp_get_max_threads();
  omp_set_num_threads(4);
  for (const double time : {notANumber, -1.0, 1e9, -std::numeric_limits<double>::infinity()}) {
    Points points(route, 1000);
    points.times[700] = time;
    const auto text = points.georeference(parameters, trajectory);
    EXPECT_EQ(text,
              time == 1e9
                  ? "Error in scanner2world: Code: 3"  // far off, by the cubic of the section
                  : "Error in scanner2world: Code: 2")
        << time;
    EXPECT_TRUE(std::isfinite(points.world[699].x) && std::isfinite(points.world[701].x));
    // A time without a position is one at the origin of the projection.
    EXPECT_EQ(std::isfinite(points.world[700].x), !(time > 1e8)) << time;
  }
  omp_set_num_threads(threads);
}

TEST_F(Georeferencing, SaysOfAWeekThatIsMissingThatThereIsNoPosition) {
  Points points(route, 10);
  EXPECT_EQ(Velorn::scanner2world(parameters, trajectory, points.scanner, points.times, 2319, 0,
                                  points.world, points.directions, 0, false),
            "Error in scanner2world: Code: 1");
  EXPECT_EQ(console.size(), 10U);
}

TEST_F(Georeferencing, RefusesListsOfUnequalLengthAndParametersWithoutSections) {
  Points points(route, 10);
  points.world.pop_back();
  EXPECT_THAT(points.georeference(parameters, trajectory), HasSubstr("9 world points"));
  EXPECT_EQ(points.directions[0], vector());
  EXPECT_THAT(Velorn::world2scanner(parameters, trajectory, points.scanner, points.times, week, 0,
                                    points.world),
              HasSubstr("9 world points"));
  Points others(route, 10);
  EXPECT_THAT(others.georeference(SolverParameters(), trajectory),
              testing::StartsWith("scanner2world: "));
  Points nothing(0);
  EXPECT_EQ(nothing.georeference(parameters, trajectory), "");
}

TEST_F(Georeferencing, GoesBackToTheScannerWhereOnlyTheMountingIsCorrected) {
  auto values = std::vector<double>(36);
  std::copy(corrections.end() - 6, corrections.end(), values.end() - 6);
  const auto mounting = restoredModel({400000}, values);
  Points points(route, 3000);
  points.georeference(mounting, trajectory);
  std::vector<point> scanner(3000);
  EXPECT_EQ(
      Velorn::world2scanner(mounting, trajectory, scanner, points.times, week, 0, points.world),
      "");
  Points again = points;
  again.scanner = scanner;
  again.georeference(mounting, trajectory);
  for (std::size_t i = 0; i < 3000; ++i) {
    ASSERT_LT(length(scanner[i] - points.scanner[i]), betweenTwoWays);
    ASSERT_LT(length(again.world[i] - points.world[i]), betweenTwoWays);
  }
  EXPECT_EQ(Velorn::world2scanner(SolverParameters(), trajectory, scanner, points.times, 1, 0,
                                  points.world),
            "");
  EXPECT_EQ(console.size(), 3000U);
}
