// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/terminal/LibraryMessages.h"
#include "host/terminal/Progress.h"

namespace {

/// A progress whose clock the test turns and whose output it reads.
class ProgressTest : public testing::Test {
 protected:
  Progress on(bool terminal) {
    return Progress([this](std::string_view text) { said += text; }, terminal,
                    [this] { return now; });
  }

  std::string takeSaid() { return std::exchange(said, {}); }

  std::string said;
  double now = 1000.0;  // [s]
};

}  // namespace

TEST_F(ProgressTest, ALogGetsTheFirstReportAndThenALineEveryTenSeconds) {
  auto progress = on(false);
  for (std::size_t i = 0; i < 3000; ++i) {  // 128 a second, an exact step
    progress.report("points", i, 3000);
    now += 1.0 / 128;
  }
  EXPECT_EQ(takeSaid(),
            "points 1 of 3000\n"
            "points 1281 of 3000, 128/s, 0:13 left\n"
            "points 2561 of 3000, 128/s, 0:03 left\n");
  progress.report("another job", 0, 3);  // does not quicken the pace
  EXPECT_EQ(takeSaid(), "");
}

TEST_F(ProgressTest, RateAndTimeLeftBelongToOneTextAndToWhatWasDoneSince) {
  auto progress = on(false);
  progress.report("quick", 900, 1000);
  now += 60;
  progress.report("strip", 0, 90);
  now += 240;
  progress.report("strip", 2, 90);
  EXPECT_EQ(takeSaid(),
            "quick 901 of 1000\n"
            "strip 1 of 90\n"
            "strip 3 of 90, 120.0 s each, 2:56:00 left\n");
  now += 20;
  progress.report("lines", 7, 0);  // of an unknown number
  now += 10;
  progress.report("lines", 57, 0);
  EXPECT_EQ(takeSaid(), "lines 8\nlines 58, 5/s\n");
}

TEST_F(ProgressTest, ABarIsRedrawnInPlaceAndMakesRoomForMessages) {
  {
    auto progress = on(true);
    progress.report("strip", 0, 4);
    EXPECT_EQ(takeSaid(), "strip [                    ] 1 of 4");
    now += 0.05;
    progress.report("strip", 1, 4);  // too soon to be seen
    EXPECT_EQ(takeSaid(), "");
    now += 5.95;
    progress.report("strip", 3, 4);
    EXPECT_EQ(takeSaid(), "\r\x1b[Kstrip [===============     ] 4 of 4, 2.0 s each, 0:02 left");
    progress.message("a warning");
    EXPECT_EQ(takeSaid(),
              "\r\x1b[K"
              "a warning\nstrip [===============     ] 4 of 4, 2.0 s each, 0:02 left");
  }
  EXPECT_EQ(takeSaid(), "\r\x1b[K");
  on(true).report(std::string(100, 'x'), 0, 4);  // must not wrap around
  EXPECT_EQ(takeSaid(), std::string(79, 'x') + "\r\x1b[K");
  auto progress = on(true);
  progress.message("before any bar");
  EXPECT_EQ(takeSaid(), "before any bar\n");
}

TEST_F(ProgressTest, WhatTheLibrarySaysIsShownExceptForItsStepsWhenQuiet) {
  for (const bool quiet : {false, true}) {
    auto progress = on(false);
    const LibraryMessages messages(progress, quiet);
    Morvane::Console::writeLine("setSection # 1 of 4");
    Morvane::Console::writeLine("Warning: gnuplot cannot be started");
    EXPECT_EQ(takeSaid(), quiet ? "Warning: gnuplot cannot be started\n"
                                : "setSection # 1 of 4\nWarning: gnuplot cannot be started\n");
  }
}
