// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "flight/formats/PoseOrder.h"
#include "flight/formats/Sbet.h"
#include "tests/flight/formats/DoubleRecordBytes.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"

using namespace Velorn::Flights;

using std::numbers::pi;
using testing::AllOf, testing::HasSubstr;

namespace {

using Values = std::array<double, 17>;

Values valuesAt(double time, double heading = 0.5, double wander = 0.0) {
  return {time, 0.86, 0.15, 1150.0, 1, 2, 3, 0.01, -0.02, heading, wander, 0, 0, 9.8, 0, 0, 0};
}

}  // namespace

TEST(Sbet, RealRecordsAgreeWithAnIndependentReading) {
  const auto records = readSbet(VELORN_TEST_DATA "/line/sbet.out");
  const auto columns = trajectoryColumns(records, 32611);
  ASSERT_EQ(records.size(), 200u);
  struct Expected {
    std::size_t record;
    double time, latitude, longitude, height;  // as numpy.fromfile(..., "<f8") reads them
    double easting, northing;                  // cct +proj=utm +zone=11 +ellps=WGS84, PROJ 9.1
    double roll, pitch, yaw;                   // numpy.degrees, yaw of column 9 less column 10
  };
  // That the wander angle is subtracted the file itself tells: the velocities point to 159.40
  // degrees in the platform's frame, which is turned by 1.02 degrees, and the positions to 158.4.
  for (const auto& e : {Expected{0, 400825.0013129992, 0.6591193041070427, -2.0773576101964117,
                                 6991.64706648894, 321738.235909309, 4181643.094922475,
                                 -0.09001964880905962, 2.9060914305529466, 163.9871459297294},
                        Expected{77, 400825.38640287507, 0.6591130962284077, -2.0773545115552703,
                                 6991.652288160097, 321753.021414558, 4181603.287832716,
                                 0.05839968054234036, 2.914127002030117, 163.96141962256388},
                        Expected{199, 400825.9965316785, 0.6591032609508304, -2.0773496003367242,
                                 6991.681271365001, 321776.456695729, 4181540.220445872,
                                 0.015055894452466108, 2.8768410243292766, 163.92419392399202}}) {
    SCOPED_TRACE(e.record);
    const auto& record = records[e.record];
    EXPECT_EQ(record.time, e.time);
    EXPECT_EQ(record.latitude, e.latitude);
    EXPECT_EQ(record.longitude, e.longitude);
    EXPECT_EQ(record.height, e.height);
    EXPECT_EQ(columns.times[e.record], e.time);
    const auto& position = columns.positions[e.record];
    EXPECT_NEAR(position.x, e.easting, 1e-8);  // the bound of the projection
    EXPECT_NEAR(position.y, e.northing, 1e-8);
    EXPECT_EQ(position.z, e.height);
    EXPECT_NEAR(columns.roll[e.record], e.roll, 1e-13);  // rounding of some 1 to 160 degrees
    EXPECT_NEAR(columns.pitch[e.record], e.pitch, 1e-13);
    EXPECT_NEAR(columns.yaw[e.record], e.yaw, 1e-13);
  }
}

TEST(Sbet, YawGoesOnWhereTheHeadingWrapsAround) {
  const TemporaryFolder folder;
  std::vector<Values> records;
  std::vector<double> truth;  // two and a half turns to the right, then back to the left
  for (int i = 0; i <= 150; ++i) {
    truth.push_back(170.0 + 12.0 * (i <= 75 ? i : 150 - i));
    const double wrapped = std::remainder(truth.back() * pi / 180.0, 2 * pi);
    records.push_back(valuesAt(100.0 + i, wrapped + 0.3, 0.3));
  }
  writeContent(folder / "circle.sbet", bytesOf(records));
  const auto yaw = trajectoryColumns(readSbet(folder / "circle.sbet"), 32632).yaw;
  ASSERT_EQ(yaw.size(), truth.size());
  for (std::size_t i = 0; i < yaw.size(); ++i) EXPECT_NEAR(yaw[i], truth[i], 1e-11) << i;
}

TEST(Sbet, RecordsInAnyOrderAreReadOnRequestButNotOverTheEndOfAWeek) {
  const TemporaryFolder folder;
  writeContent(folder / "mixed.sbet", bytesOf<17>({valuesAt(3.0), valuesAt(2.0), valuesAt(2.0)}));
  EXPECT_THAT(refusalOf([&] { readSbet(folder / "mixed.sbet"); }, {}),
              HasSubstr("record 2 of 3: its time 2 s"));
  const auto records = readSbet(folder / "mixed.sbet", TimeOrder::Any);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0].time, 3.0);
  EXPECT_EQ(records[2].time, 2.0);
  for (const auto& bad : {valuesAt(std::nan("")), valuesAt(1.0)}) {  // sorted, the week would break
    writeContent(folder / "bad.sbet", bytesOf<17>({valuesAt(604799.0), bad}));
    EXPECT_THROW(readSbet(folder / "bad.sbet", TimeOrder::Any), Error);
  }
}

TEST(Sbet, WhatIsNoTrajectoryIsRefusedWithFileRecordAndValue) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const auto with = [](std::size_t place, double value) {
    return bytesWith<17>({valuesAt(1.0), valuesAt(2.0), valuesAt(3.0)}, place, value);
  };
  const std::string whole = bytesOf<17>({valuesAt(400000.1), valuesAt(400000.2)});
  struct Case {
    std::string bytes;
    const char* told;
  };
  const TemporaryFolder folder;
  for (const auto& [bytes, told] :
       {Case{"", "is empty"},
        Case{whole.substr(0, 200),
             "its 200 bytes are not whole records of 136 bytes each: 1 "
             "records and 64 bytes"},
        Case{with(0, nan), "record 2 of 3: the time is nan"},
        Case{with(3, -std::numeric_limits<double>::infinity()),
             "record 2 of 3: the height is -inf"},
        Case{with(10, nan), "record 2 of 3: the wander angle is nan"},
        Case{with(1, 49.27), "record 2 of 3: the latitude is 49.27 rad"},  // degrees
        Case{with(2, 3.2), "record 2 of 3: the longitude is 3.2 rad"},
        Case{with(0, 1.0), "record 2 of 3: its time 1 s is not after 1 s"},
        Case{with(0, 604799.995),
             "record 3 of 3: its time 3 s is not after 604799.995 s, the time "
             "of the record before; where a GPS week ends"},
        Case{reversedValues(whole),
             "record 1 of 2: the time makes no sense, but does with its "
             "bytes in reverse: the file is big-endian"},
        Case{std::string(272, '\0'), "record 2 of 2: its time 0 s is not after 0 s"}}) {
    SCOPED_TRACE(told);
    writeContent(folder / "bad.sbet", bytes);
    EXPECT_THAT(refusalOf([&] { readSbet(folder / "bad.sbet"); }, {}),
                AllOf(HasSubstr((folder / "bad.sbet").string() + ": "), HasSubstr(told)));
  }
  EXPECT_THAT(refusalOf([&] { readSbet(folder / "none.sbet"); }, {}),
              HasSubstr("none.sbet: no such file"));
  EXPECT_THAT(refusalOf([&] { readSbet(folder.path()); }, {}),
              HasSubstr("is not a file with records"));
  EXPECT_THROW(trajectoryColumns({SbetRecord{}}, 4326), std::invalid_argument);
}

namespace {

/// Records of these times; the height tells the place in the file.
std::vector<SbetRecord> recordsAt(const std::vector<double>& times) {
  std::vector<SbetRecord> records;
  records.reserve(times.size());
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
