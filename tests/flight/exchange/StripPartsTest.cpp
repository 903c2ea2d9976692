// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "flight/exchange/StripParts.h"

namespace {

using namespace Velorn::Flights;
using testing::ElementsAre;

TEST(StripParts, AreInOrderOfTimeAndPointsOfOneTimeInOrderOfTheFile) {
  const std::vector<GpsTime> times{{7, 3}, {7, 1}, {7, 2}, {7, 1}};
  const auto parts = stripParts(times, std::vector<std::uint16_t>(4, 5), 10);
  ASSERT_EQ(parts.size(), 1U);
  EXPECT_EQ(parts[0].week, 7);
  EXPECT_THAT(parts[0].order, ElementsAre(1, 3, 2, 0));
}

TEST(StripParts, EndAtAnotherSourceAnotherWeekAndALongGap) {
  const std::vector<GpsTime> times{{7, 100}, {7, 111}, {8, 0}, {7, 110}, {7, 105}};
  const std::vector<std::uint16_t> sources{1, 1, 1, 1, 2};
  const auto parts = stripParts(times, sources, 9);
  ASSERT_EQ(parts.size(), 4U);
  EXPECT_THAT(parts[0].order, ElementsAre(0));
  EXPECT_THAT(parts[1].order, ElementsAre(3, 1));
  EXPECT_THAT(parts[2].order, ElementsAre(2));
  EXPECT_EQ(parts[2].week, 8);
  EXPECT_THAT(parts[3].order, ElementsAre(4));
  EXPECT_EQ(parts[3].sourceId, 2);
  EXPECT_EQ(stripParts(times, sources, 10).size(), 3U);  // a gap as long as that is none
  EXPECT_TRUE(stripParts({}, {}, 1).empty());
}

}  // namespace
