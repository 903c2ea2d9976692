// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <bit>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "flight/formats/TextTrajectory.h"
#include "flight/formats/TrajectoryExport.h"
#include "platform/geomra/Degree.h"
#include "platform/tessaly/TransverseMercator.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"

using namespace Velorn::Flights;
using std::numbers::pi;
using testing::AllOf, testing::ElementsAre, testing::HasSubstr, testing::ThrowsMessage;

namespace {

using Geomra::degree;

/// What a text holds, so that a test can read a file with these lines.
TextTrajectory trajectoryOf(const std::string& content, const TextTrajectoryFormat& format = {}) {
  const TemporaryFolder folder;
  writeContent(folder / "flight.txt", content);
  return readTextTrajectory(folder / "flight.txt", format);
}

std::vector<double> timesOf(const TextTrajectory& trajectory) {
  std::vector<double> times;
  for (const auto& record : trajectory.records) times.push_back(record.time);
  return times;
}

/// Lines of the default format that differ in their times.
std::string linesAt(const std::vector<std::string>& times) {
  std::string lines;
  for (const auto& time : times) lines += time + " 48.1 11.5 900 1 -2 163\n";
  return lines;
}

/// One way to write a file.
struct Variant {
  bool projected;
  AngleUnit position, attitude;
  NorthReference north;
  char delimiter;
};

constexpr unsigned zone11 = 32611;

std::string textOf(const std::vector<SbetRecord>& records, const Variant& variant) {
  const auto zone = Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(zone11);
  const auto in = [](AngleUnit unit) { return unit == AngleUnit::Degrees ? degree : 1.0; };
  std::string text = "Time, First, Second and the others\n";
  for (const auto& r : records) {
    const Geomra::PhysicalSpace::point place{r.longitude, r.latitude, r.height};
    const auto onMap = Tessaly::transverseMercatorProjection(place, zone, true);
    const double convergence =
        variant.north == NorthReference::Grid ? Tessaly::meridianConvergence(place, zone) : 0.0;
    text += fmt::format("{1}{0}7{0}{2}{0}{3}{0}{4}{0}{5}{0}{6}{0}{7}{0}more\n", variant.delimiter,
                        r.time, variant.projected ? onMap.x : r.latitude / in(variant.position),
                        variant.projected ? onMap.y : r.longitude / in(variant.position), r.height,
                        r.roll / in(variant.attitude), r.pitch / in(variant.attitude),
                        (r.heading - convergence) / in(variant.attitude));
  }
  return text;
}

}  // namespace

TEST(TextTrajectory, EveryWayToWriteAFlightGivesTheSameRecords) {
  const auto records = readSbet(VELORN_TEST_DATA "/line/sbet.out");
  constexpr auto degrees = AngleUnit::Degrees, radians = AngleUnit::Radians;
  constexpr auto fromTrue = NorthReference::True, fromGrid = NorthReference::Grid;
  for (const auto& variant : {Variant{false, degrees, degrees, fromTrue, ','},
                              Variant{false, radians, radians, fromGrid, ';'},
                              Variant{false, degrees, radians, fromGrid, '\t'},
                              Variant{false, radians, degrees, fromTrue, ' '},
                              Variant{true, degrees, degrees, fromGrid, ' '},
                              Variant{true, degrees, radians, fromTrue, ','}}) {
    TextTrajectoryFormat format;
    format.columns = variant.projected ? "time - easting northing height roll pitch heading"
                                       : "time,-,latitude,longitude,height,roll,pitch,heading";
    format.positionUnit = variant.position;
    format.attitudeUnit = variant.attitude;
    format.heading = variant.north;
    format.epsg = zone11;
    const auto text = textOf(records, variant);
    SCOPED_TRACE(text.substr(0, 200));
    const auto read = trajectoryOf(text, format);
    ASSERT_EQ(read.records.size(), records.size());
    EXPECT_FALSE(read.attitudeMayBeRadians);
    for (std::size_t i = 0; i < records.size(); ++i) {
      const auto &got = read.records[i], &wanted = records[i];
      EXPECT_EQ(got.time, wanted.time);
      EXPECT_EQ(got.height, wanted.height);
      EXPECT_NEAR(got.latitude, wanted.latitude, 3e-15);  // 2e-8 m
      EXPECT_NEAR(got.longitude, wanted.longitude, 3e-15);
      EXPECT_NEAR(got.roll, wanted.roll, 1e-15);
      EXPECT_NEAR(got.pitch, wanted.pitch, 1e-15);
      EXPECT_NEAR(got.heading, wanted.heading, 2e-15);  // and the convergence at that place
    }
  }
}

TEST(TextTrajectory, AHeadingFromGridNorthIsTurnedByTheConvergence) {
  TextTrajectoryFormat format;
  format.heading = NorthReference::Grid;
  format.epsg = 32632;
  const auto heading = [&](const std::string& longitude) {
    return trajectoryOf("1 48 " + longitude + " 900 0 0 100\n", format).records[0].heading / degree;
  };
  // To first order (longitude - 9) sin(latitude).
  EXPECT_NEAR(heading("11"), 100 + 2 * std::sin(48 * degree), 1e-3);
  EXPECT_NEAR(heading("8"), 100 - std::sin(48 * degree), 1e-3);
}

TEST(TextTrajectory, TimesBecomeSecondsOfTheWeekOfTheEarliest) {
  const auto read = [](const std::vector<std::string>& times,
                       TimeScale scale = TimeScale::FoundOut) {
    TextTrajectoryFormat format;
    format.time = scale;
    return trajectoryOf(linesAt(times), format);
  };
  const auto ofWeek = read({"400825.25", "400824"});
  EXPECT_FALSE(ofWeek.week);
  EXPECT_THAT(timesOf(ofWeek), ElementsAre(400825.25, 400824));
  EXPECT_THAT(timesOf(read({"604799.5", "0.5", "604799.75", "1", "604802"})),
              ElementsAre(604799.5, 604800.5, 604799.75, 604801, 604802));
  // Week 2058 begins 2058 * 604800 = 1244678400 s after the begin of GPS time.
  for (const auto& gps :
       {read({"1245283199.5", "1245283200.5", "1245283198"}),
        read({"245283199.5", "245283200.5", "245283198"}),
        read({"+245283199.5", "245283200.5", "245283198"}, TimeScale::Adjusted)}) {
    EXPECT_EQ(gps.week, 2058);
    EXPECT_THAT(timesOf(gps), ElementsAre(604799.5, 604800.5, 604798));
  }
  EXPECT_EQ(read({"-100000000"}).week, 1488);  // 9e8 s: July 2008
  EXPECT_EQ(read({"500000000"}, TimeScale::Gps).week, 826);
}

TEST(TextTrajectory, WhatCannotBeAFlightIsRefusedWithFileLineAndText) {
  struct Case {
    std::string content;
    const char* told;
  };
  const std::string good = "# a comment\nT B L H R P Y\n5 48.1 11.5 900 1 -2 163\n";
  for (const auto& [content, told] :
       {Case{"", "holds no line of numbers"},
        Case{"\x7F"
             "ELF\n",
             "holds no line of numbers"},
        Case{good + "6 48.1 11.5 900 1 -2\n",
             "line 4: there is no column 7 for the heading, only 6: \"6 48.1 11.5 900 1 -2\""},
        Case{good + "6 48,1 11.5 900 1 -2 163\n",
             "the latitude in column 2 is \"48,1\", no number; decimals have to follow a point"},
        Case{good + "6 48.1 11.5 nan 1 -2 163\n", "line 4: the height in column 4 is nan"},
        Case{good + "6 98.1 11.5 900 1 -2 163\n", "the latitude is 98.1 degrees, not between -90"},
        Case{good + "-1 48.1 11.5 900 1 -2 163\n", "the time -1 s is none of a week"},
        Case{good + "1245283199 48.1 11.5 900 1 -2 163\n", "is none of a week, as others"},
        Case{linesAt({"245283199", "1245283199"}), "line 2: its time is 1000000000 s away"},
        Case{"5 48.1 11.5 900 1 -2 163 a,b\n", "columns may be parted by something else"},
        Case{"Week 2058\n" + good, "line 1: the time in column 1 is \"Week\", no number"},
        Case{"5 0.84 0.2 900 0.01 -0.02 2.8\n", "say radians for the positions and the attitude"},
        Case{"5 0.84 0.2 900 1 -2 163\n", "say radians for the positions"}}) {
    SCOPED_TRACE(told);
    EXPECT_THAT([&text = content] { trajectoryOf(text); },
                ThrowsMessage<Error>(AllOf(HasSubstr("flight.txt: "), HasSubstr(told))));
  }
  EXPECT_TRUE(trajectoryOf("5 48.1 11.5 900 1 -2 3\n").attitudeMayBeRadians);
  for (const char* const place : {"5 0.4 11.5", "5 51.5 -0.1"}) {  // Gabon, London: no radians
    EXPECT_EQ(trajectoryOf(std::string(place) + " 900 1 -2 163\n").records.size(), 1u);
  }
}

TEST(TextTrajectory, AFormatThatDoesNotFitIsRefusedByItsWord) {
  const auto refuses = [](TextTrajectoryFormat format, const std::string& line, const char* told) {
    EXPECT_THAT([&] { trajectoryOf(line, format); }, ThrowsMessage<Error>(HasSubstr(told)));
  };
  TextTrajectoryFormat format;
  const std::string geographic = "5 48.1 11.5 900 1 -2 163\n";
  for (const auto& [columns, told] :
       {std::pair{"time latitude lon height roll pitch heading", "\"lon\" is no quantity"},
        std::pair{"time time", "\"time\" is there twice"},
        std::pair{"time latitude longitude height roll pitch", "heading is missing"},
        std::pair{"time easting height roll pitch heading", "northing is missing"},
        std::pair{"time easting northing latitude height roll pitch heading", "as projected"}}) {
    format.columns = columns;
    refuses(format, geographic, told);
  }
  format = {};
  format.positionUnit = AngleUnit::Radians;
  refuses(format, geographic,
          "the latitude is 48.1 radians, not between -1.5708 and 1.5708; say degrees");
  format.positionUnit = AngleUnit::Degrees;
  format.attitudeUnit = AngleUnit::Radians;
  refuses(
      format, geographic,
      "the heading is 163 radians, not between -12.5664 and 12.5664; say degrees for the attitude");
  format = {};
  format.columns = "time easting northing height roll pitch heading";
  refuses(format, geographic, "give the EPSG code");
  format.epsg = 4326;
  refuses(format, geographic, "EPSG code 4326");
  format.epsg = 32632;
  refuses(format, geographic, "the easting is 48.1, not between 1000 and 999000");
  refuses(format, "5 32656079 5341543 900 1 -2 163\n", "without the number of its zone");
}

TEST(TrajectoryExport, SbetReadsBackWithTheSameBits) {
  const TemporaryFolder folder;
  const auto records = readSbet(VELORN_TEST_DATA "/line/sbet.out");
  std::vector<SbetRecord> many;
  for (int i = 0; i < 10000; ++i) {  // more than a block
    many.push_back(records[static_cast<std::size_t>(i) % records.size()]);
    many.back().time = 604000.1 + 0.37 * i;
  }
  many[9].heading = -6.2;         // within a turn: stays
  many[10].heading = 9 * pi + 1;  // an unwrapped yaw
  writeContent(folder / "out.sbet", "old");
  writeSbet(folder / "out.sbet", many);
  EXPECT_EQ(std::filesystem::file_size(folder / "out.sbet"), 136u * many.size());
  const auto read = readSbet(folder / "out.sbet");
  ASSERT_EQ(read.size(), many.size());
  EXPECT_NEAR(read[10].heading, 1 - pi, 1e-14);
  many[10].heading = read[10].heading;
  const auto bits = [](double value) { return std::bit_cast<std::uint64_t>(value); };
  for (std::size_t i = 0; i < read.size(); ++i) {
    for (const auto member :
         {&SbetRecord::time, &SbetRecord::latitude, &SbetRecord::longitude, &SbetRecord::height,
          &SbetRecord::roll, &SbetRecord::pitch, &SbetRecord::heading}) {
      ASSERT_EQ(bits(read[i].*member), bits(many[i].*member)) << i;
    }
  }
}

TEST(TrajectoryExport, TextReadsBackByItsDefaultsAndByItsMapCoordinates) {
  const TemporaryFolder folder;
  const auto records = readSbet(VELORN_TEST_DATA "/line/sbet.out");
  writeTextTrajectory(folder / "out.txt", records, zone11);
  TextTrajectoryFormat onMap;
  onMap.columns = "time - - height roll pitch heading easting northing";
  onMap.epsg = zone11;
  for (const auto& format : {TextTrajectoryFormat{}, onMap}) {
    const auto read = readTextTrajectory(folder / "out.txt", format).records;
    ASSERT_EQ(read.size(), records.size());
    for (std::size_t i = 0; i < read.size(); ++i) {
      EXPECT_EQ(read[i].time, records[i].time);
      EXPECT_NEAR(read[i].latitude, records[i].latitude, 3e-15);
      EXPECT_NEAR(read[i].longitude, records[i].longitude, 3e-15);
      EXPECT_NEAR(read[i].heading, records[i].heading, 1e-15);
    }
  }
}

TEST(TrajectoryExport, WhatCannotBeWrittenLeavesTheOldFile) {
  const TemporaryFolder folder;
  auto records = readSbet(VELORN_TEST_DATA "/line/sbet.out");
  records[2].pitch = std::nan("");
  writeContent(folder / "out", "old");
  EXPECT_THAT([&] { writeSbet(folder / "out", records); },
              ThrowsMessage<Error>(HasSubstr("out: record 3 of 200 holds nan")));
  EXPECT_THROW(writeSbet(folder / "out", {}), Error);
  EXPECT_THROW(writeTextTrajectory(folder / "out", {SbetRecord{}}, 4326), Error);
  EXPECT_EQ(contentOf(folder / "out"), "old");
  EXPECT_THAT(refusalOf([&] { writeSbet(folder / "none/out", {SbetRecord{}}); }, Error::NoSpace),
              HasSubstr("none/out: "));
}
