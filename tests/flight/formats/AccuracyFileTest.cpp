// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "flight/formats/AccuracyFile.h"
#include "tests/flight/formats/DoubleRecordBytes.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"

using namespace Velorn::Flights;
using testing::AllOf, testing::HasSubstr;

namespace {

using AccuracyValues = std::array<double, 10>;

AccuracyValues accuracyAt(double time) {
  return {time, 0.012, 0.011, 0.02, 0.001, 0.001, 0.002, 0.15, 0.14, 0.3};
}

}  // namespace

TEST(AccuracyFile, IsReadWithItsAxesAndUnitsInTheOrderOfOurs) {
  const TemporaryFolder folder;
  AccuracyValues second{100002.0, 1, 2, 3, 4, 5, 6, 10, 20, 60};
  writeContent(folder / "smrmsg.out", bytesOf<10>({accuracyAt(100001.0), second}));
  const auto records = readAccuracy(folder / "smrmsg.out");
  ASSERT_EQ(records.size(), 2U);
  EXPECT_EQ(records[0].time, 100001.0);
  EXPECT_THAT(records[1].accuracy.position, testing::ElementsAre(2, 1, 3)) << "east, north, height";
  EXPECT_NEAR(records[1].accuracy.attitude[0], 0.0029088820866572, 1e-15) << "10' in radians";
  EXPECT_NEAR(records[1].accuracy.attitude[2], 0.0174532925199433, 1e-15) << "1 degree in radians";
}

TEST(AccuracyFile, OverAStripIsTheRootMeanSquareOfTheRecordsInIt) {
  std::vector<AccuracyRecord> records;
  for (const double time : {12.0, 10.0, 11.0, 13.0}) {
    records.push_back({time, {{time, 1.0, 1.0}, {1.0, 1.0, 0.1 * time}}});
  }
  const auto mean = accuracyOver(records, 10.0, 12.0);
  ASSERT_TRUE(mean);
  EXPECT_NEAR(mean->position[0], std::sqrt((144.0 + 100.0 + 121.0) / 3.0), 1e-12);
  EXPECT_NEAR(mean->position[1], 1.0, 1e-12);
  EXPECT_NEAR(mean->attitude[2], 0.1 * mean->position[0], 1e-12);
  EXPECT_FALSE(accuracyOver(records, 10.1, 10.9));
  EXPECT_FALSE(accuracyOver({}, 0.0, 100.0));
}

TEST(AccuracyFile, WhatIsNoneIsRefusedWithFileRecordAndValue) {
  const auto with = [](std::size_t place, double value) {
    return bytesWith<10>({accuracyAt(1.0), accuracyAt(2.0), accuracyAt(3.0)}, place, value);
  };
  const std::string reversed =
      reversedValues(bytesOf<10>({accuracyAt(400000.1), accuracyAt(400000.2)}));
  struct Case {
    std::string bytes;
    const char* told;
  };
  const TemporaryFolder folder;
  for (const auto& [bytes, told] :
       {Case{"", "is empty"},
        Case{bytesOf<10>({accuracyAt(1.0), accuracyAt(2.0)}).substr(0, 150),
             "its 150 bytes are not whole records of 80 bytes each: 1 records and 70 bytes; it is "
             "cut off or no accuracy file"},
        Case{with(1, -0.01), "record 2 of 3: the north error is -0.01 m, not between 1e-09 and"},
        Case{with(2, std::nan("")), "record 2 of 3: the east error is nan"},
        Case{with(3, 0.0), "record 2 of 3: the down error is 0 m"},
        Case{with(3, 4000.0), "record 2 of 3: the down error is 4000 m"},
        Case{with(5, std::numeric_limits<double>::infinity()), "the east velocity error is inf"},
        Case{with(9, 10801.0), "the heading error is 10801 minutes of arc"},
        Case{with(0, -1.0), "record 2 of 3: the time is -1 s"},
        Case{bytesOf<10>({accuracyAt(604799.0), accuracyAt(1.0)}), "where a GPS week ends"},
        Case{reversed, "an accuracy file has to be little-endian"}}) {
    SCOPED_TRACE(told);
    writeContent(folder / "smrmsg.out", bytes);
    EXPECT_THAT(refusalOf([&] { readAccuracy(folder / "smrmsg.out"); }, {}),
                AllOf(HasSubstr((folder / "smrmsg.out").string() + ": "), HasSubstr(told)));
  }
  EXPECT_THAT(refusalOf([&] { readAccuracy(folder / "none.out"); }, {}),
              HasSubstr("none.out: no such file"));
}
