// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>
#include <stdexcept>

#include <gtest/gtest.h>

#include "flight/formats/PoseOrder.h"

using namespace Velorn::Flights;

namespace {

/// Records of these times; the height tells the place in the file.
std::vector<SbetRecord> recordsAt(const std::vector<double>& times) {
  std::vector<SbetRecord> records;
  for (const double time : times) {
    records.push_back({time, 0.8, 0.2, static_cast<double>(records.size()), 0, 0, 1});
  }
  return records;
}

}  // namespace

TEST(PoseOrder, RecordsOutOfOrderAreSortedAndOfOneTimeTheFirstStays) {
  auto records = recordsAt({5, 6, 9, 7, 7, 8, 6, 9, 10});
  records[7].height =
      records[2].height;  // the pose of 9 s is there twice, those of 6 and 7 s differ
  const auto [ordered, report] = inTimeOrder(records);
  ASSERT_EQ(ordered.size(), 6u);
  const double times[] = {5, 6, 7, 8, 9, 10}, places[] = {0, 1, 3, 5, 2, 8};
  for (std::size_t i = 0; i < ordered.size(); ++i) {
    EXPECT_EQ(ordered[i].time, times[i]);
    EXPECT_EQ(ordered[i].height, places[i]);
  }
  EXPECT_EQ(report.outOfOrder.count, 4u);
  EXPECT_EQ(report.outOfOrder.firstTime, 7.0);
  EXPECT_EQ(report.dropped.count, 3u);
  EXPECT_EQ(report.dropped.firstTime, 6.0);
  EXPECT_EQ(report.otherPose.count, 2u);
  EXPECT_EQ(report.otherPose.firstTime, 6.0);
}

TEST(PoseOrder, RecordsInOrderStayAndNothingIsReported) {
  const auto [ordered, report] = inTimeOrder(recordsAt({1, 2, 4}));
  EXPECT_EQ(ordered.size(), 3u);
  EXPECT_EQ(report.outOfOrder.count + report.dropped.count + report.otherPose.count, 0u);
  EXPECT_TRUE(std::isnan(report.dropped.firstTime));
  EXPECT_TRUE(inTimeOrder({}).records.empty());
  EXPECT_THROW(inTimeOrder(recordsAt({1, std::nan(""), 0})), std::invalid_argument);
}

TEST(PoseOrder, GapsAreThoseLongerThanTheLimit) {
  const auto gaps = gapsLongerThan(1.0, recordsAt({0, 1, 3.5, 4.5, 6}));
  ASSERT_EQ(gaps.size(), 2u);
  EXPECT_EQ(gaps[0].from, 1.0);
  EXPECT_EQ(gaps[0].to, 3.5);
  EXPECT_EQ(gaps[1].from, 4.5);
  EXPECT_TRUE(gapsLongerThan(1.0, {}).empty());
  for (const double limit : {-1.0, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_THROW(gapsLongerThan(limit, {}), std::invalid_argument);
  }
}
