// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <filesystem>
#include <limits>
#include <set>
#include <string>

#include <gmock/gmock.h>

#include "adjustment/statistics/MovementHistogram.h"
#include "adjustment/statistics/PointMeasures.h"
#include "adjustment/statistics/StatisticFolder.h"
#include "tests/support/TemporaryFolder.h"

namespace fs = std::filesystem;
using namespace Velorn;
using Geomra::PhysicalSpace::point;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
const double notANumber = std::nan("");

MovementHistogram histogramOf(std::initializer_list<double> movements) {
  MovementHistogram histogram;
  for (const double movement : movements) countInto(histogram, movement);
  return histogram;
}

}  // namespace

TEST(MovementHistogram, QuantileIsTheLowerEdgeOfTheFirstBinThatReachesItsShareOfTheCounts) {
  const auto ten = histogramOf({0.05, 0.15, 0.25, 0.35, 0.45, 0.55, 0.65, 0.75, 0.85, 0.95});
  EXPECT_EQ(quantile(ten, 0.9), 0.8);
  EXPECT_EQ(quantile(ten, 1.0), 0.9);
  EXPECT_EQ(quantile(MovementHistogram(), 0.9), 0.0);
  EXPECT_EQ(quantile(histogramOf({3.25}), 0.9), 0.0);  // its share of one movement is none
  EXPECT_EQ(quantile(histogramOf({3.25, 3.25}), 0.9), 32 * 0.1);
}

TEST(MovementHistogram, BinIsTheTruncatedQuotientAndMovementsBesideTheBinsEnterNoQuantile) {
  // 0.3 / 0.1 is 2.9999999999999996 in doubles.
  const auto h = histogramOf({0.0, 0.3, 3.99, 4.0, 1e300, infinity, notANumber, 4.0, 4.0, 4.0});
  EXPECT_EQ(h.counts[0] + h.counts[2] + h.counts[39], 3U);
  EXPECT_EQ(h.total, 3U);
  EXPECT_EQ(h.beyond, 5U);
  EXPECT_EQ(h.notFinite, 2U);
  EXPECT_EQ(quantile(h, 0.9), 2 * 0.1);  // two of the three, not nine of the ten
}

TEST(PointMeasures, DistancesNeitherOverflowNorVanishNorHideNaN) {
  EXPECT_DOUBLE_EQ(horizontalDistance({1, 1, 0}, {4, -3, 99}), 5.0);
  EXPECT_DOUBLE_EQ(horizontalDistance({0, 0, 0}, {3e300, 4e300, 0}), 5e300);
  EXPECT_DOUBLE_EQ(horizontalDistance({0, 0, 0}, {-3e-300, 4e-300, 0}), 5e-300);
  EXPECT_EQ(horizontalDistance({7, 8, 0}, {7, 8, 1}), 0.0);
  EXPECT_TRUE(std::isnan(horizontalDistance({0, 0, 0}, {notANumber, 0, 0})));
  EXPECT_TRUE(std::isnan(horizontalDistance({0, 0, 0}, {0, notANumber, 0})));
  EXPECT_EQ(verticalDistance({0, 0, 2}, {9, 9, -1}), 3.0);
}

TEST(PointMeasures, PointToPlaneHasTheSignOfTheNormalAndNotItsLength) {
  const point above{10, 20, 30.5}, on{12, 25, 30};
  for (const double length : {1.0, 3e-320, 7.0, 1e308}) {
    EXPECT_FLOAT_EQ(pointToPlane(above, on, {0, 0, length}), 0.5F) << length;
    EXPECT_FLOAT_EQ(pointToPlane(above, on, {0, 0, -length}), -0.5F) << length;
  }
  EXPECT_FLOAT_EQ(pointToPlane({3, 4, 0}, {0, 0, 0}, {1.7e308, 1.7e308, 1.7e308}),
                  7.0F / std::sqrt(3.0F));
  EXPECT_EQ(pointToPlane({-1e300, 0, 0}, {0, 0, 0}, {1, 0, 0}),
            -std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(pointToPlane(above, on, {0, -0.0, 0})));
}

TEST(StatisticFolder, OnlyRegularFilesWhoseWholeNameFitsAreRemoved) {
  const TemporaryFolder folder;
  for (const char* const gone : {"hist_.txt", "stat_a b.txt", "hist_hist_.txt.txt"}) {
    writeContent(folder / gone, "removed");
  }
  std::set<std::string> kept{"hist.txt",   "Hist_a.txt", "stat_a.txt.bak",   "a_hist_b.txt",
                             "stat_a.TXT", "stat_atxt",  "Strips_After.pdf", "hist_a\nb.txt"};
  for (const std::string& name : kept) writeContent(folder / name, "kept");
  fs::create_directory(folder / "stat_folder.txt");
  writeContent(folder / "stat_folder.txt/hist_inside.txt", "kept");
  fs::create_symlink("hist.txt", folder / "hist_link.txt");
  kept.insert({"stat_folder.txt", "hist_link.txt"});

  removeStatisticTexts(folder.path());

  EXPECT_EQ(namesIn(folder.path()), kept);
  EXPECT_TRUE(fs::exists(folder / "stat_folder.txt/hist_inside.txt"));
}
