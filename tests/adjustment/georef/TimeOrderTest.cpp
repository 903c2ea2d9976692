// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include "adjustment/georef/TimeOrder.h"

namespace {

std::vector<double> randomTimes(std::size_t count, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> time(400000, 400100);
  std::vector<double> times(count);
  for (double& t : times) t = time(random);
  return times;
}

}  // namespace

TEST(TimeOrder, NumbersEachTimeOnceAndRising) {
  auto times = randomTimes(20'000, 3);
  for (std::size_t i = 0; i < 1000; ++i) times[7 * i] = times[i];  // equal ones
  for (const double odd : {std::nan(""), std::numeric_limits<double>::infinity(), -1e300}) {
    auto given = times;
    given[333] = odd;
    auto order = Velorn::orderOfTimes(given.data(), given.size());
    const double quantum = std::isfinite(odd) ? 1e300 : 100 / 4e9;
    double before = -std::numeric_limits<double>::infinity();
    for (const auto number : order) {
      if (!std::isfinite(given[number])) continue;
      ASSERT_GE(given[number], before - quantum);
      before = given[number];
    }
    std::sort(order.begin(), order.end());
    for (std::size_t i = 0; i < order.size(); ++i) ASSERT_EQ(order[i], i);
  }
  const std::vector<double> same(100, 5.0);
  EXPECT_EQ(Velorn::orderOfTimes(same.data(), same.size()).size(), 100U);
}

TEST(TimeOrder, IsSeenToBeMissingWhereItIs) {
  auto times = randomTimes(50'000, 4);
  const auto isOutOfOrder = [&] { return Velorn::isOutOfOrder(times.data(), times.size()); };
  EXPECT_TRUE(isOutOfOrder());
  std::sort(times.begin(), times.end());
  EXPECT_FALSE(isOutOfOrder());
  std::rotate(times.begin(), times.begin() + 20'000, times.end());  // one jump back
  EXPECT_FALSE(isOutOfOrder());
  std::reverse(times.begin(), times.end());
  EXPECT_TRUE(isOutOfOrder());
  EXPECT_FALSE(Velorn::isOutOfOrder(times.data(), 0));
}

TEST(TimeOrder, BringsEachPointOnceAndItsResultsBackToItsPlace) {
  const std::size_t count = 3000;
  const auto times = randomTimes(count, 5);
  std::vector<double> points(3 * count), results(3 * count), directions(3 * count);
  std::iota(points.begin(), points.end(), 0.0);
  double last = 0;
  Velorn::inOrderOfTime({points.data(), times.data(), results.data(), directions.data(), count},
                        [&](const Velorn::PointBatch& batch) {
                          for (std::size_t i = 0; i < batch.count; ++i) {
                            EXPECT_GE(batch.times[i], last - 1e-6);
                            last = batch.times[i];
                            for (std::size_t k = 3 * i; k < 3 * i + 3; ++k) {
                              batch.results[k] = batch.points[k] + 1;
                              batch.directions[k] = -batch.points[k];
                            }
                          }
                        });
  for (std::size_t k = 0; k < 3 * count; ++k) {
    ASSERT_EQ(results[k], points[k] + 1);
    ASSERT_EQ(directions[k], -points[k]);
  }
}
