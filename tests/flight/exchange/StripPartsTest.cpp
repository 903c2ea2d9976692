// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "flight/exchange/GpsTimes.h"
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

constexpr auto ofWeek = TimeKind::secondsOfWeek;
constexpr auto adjusted = TimeKind::adjustedStandard;
constexpr auto standard = TimeKind::standard;

TEST(GpsTimes, AreReadByWhatIsPlausibleAndOtherwiseByTheHeader) {
  struct Case {
    double low, high;
    bool saysAdjusted;
    TimeKind kind;
    bool warns;
  };
  const Case cases[] = {{407100, 407200, false, ofWeek, false},
                        {604700, 604900, false, ofWeek, false},  // over the end of a week
                        {407100, 407200, true, ofWeek, true},
                        {4.02e8, 4.02e8 + 100, true, adjusted, false},
                        {4.02e8, 4.02e8 + 100, false, adjusted, true},
                        {-1e8, -1e8 + 100, true, adjusted, false},  // 2008
                        {1.402e9, 1.402e9 + 100, true, standard, true}};
  for (const Case& one : cases) {
    const auto reading = readingOf(one.low, one.high, one.saysAdjusted);
    EXPECT_EQ(reading.kind, one.kind) << one.low;
    EXPECT_EQ(!reading.warning.empty(), one.warns) << one.low;
  }
  EXPECT_THROW(readingOf(0, std::numeric_limits<double>::quiet_NaN(), false),
               std::invalid_argument);
  EXPECT_THROW(readingOf(0, 1e300, true), std::invalid_argument);
}

TEST(GpsTimes, OfOneInstantAreTheSameInAllKinds) {
  const double second = 302410.125;  // 2024-06-12 of week 2318
  for (const auto& [time, kind] :
       {std::pair(second, ofWeek), std::pair(2318 * weekSeconds + second - 1e9, adjusted),
        std::pair(2318 * weekSeconds + second, standard)}) {
    const GpsTime gps = gpsTimeOf(time, kind, 2318);
    EXPECT_EQ(gps.week, 2318);
    EXPECT_DOUBLE_EQ(gps.seconds, second);
  }
  EXPECT_EQ(gpsTimeOf(weekSeconds + 1.5, ofWeek, 2318).week, 2319);
  EXPECT_DOUBLE_EQ(gpsTimeOf(weekSeconds + 1.5, ofWeek, 2318).seconds, 1.5);
  // Just before and on the border of a week.
  const double border = 2319 * weekSeconds - 1e9;
  EXPECT_EQ(gpsTimeOf(std::nextafter(border, 0.0), adjusted, 0).week, 2318);
  EXPECT_EQ(gpsTimeOf(border, adjusted, 0).week, 2319);
  EXPECT_EQ(gpsTimeOf(border, adjusted, 0).seconds, 0.0);
}

}  // namespace
