// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <cstdlib>
#include <fstream>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "flight/formats/TrajectoryExport.h"
#include "flight/strips/GridFile.h"
#include "platform/morvane/Console.h"
#include "tests/flight/exchange/TenSeconds.h"
#include "tests/support/LasBytes.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/Georeferencing.h>
#include <velorn/flight/Error.h>
#include <velorn/flight/Import.h>

using namespace Velorn::Flights;

namespace {

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using testing::AllOf, testing::HasSubstr;

constexpr double week = 604800.0, begin = 407100.0;  // of week 2318
constexpr double standardBegin = 2318 * week + begin - 1e9;

double length(const vector& v) {
  return std::hypot(v.x, v.y, v.z);
}

/// Ten seconds over the middle of zone 32, with points below that are not in order of time.
class Flight : public testing::Test {
 protected:
  Flight() {
    write(tenSeconds(begin));
    options.strips = {folder / "a.las"};
    options.trajectory.files = {folder / "flight.sbet"};
    options.output = folder / "out";
    options.leverArm = {0.1, -0.2, 0.3};
    options.misalignment = {0.1, 0.2, -0.3};
    sample = sampleOf(200);
    save(sample);
  }

  void write(const std::vector<SbetRecord>& records) { writeSbet(folder / "flight.sbet", records); }

  static LasSample sampleOf(int count) {
    LasSample made = lasOverZone32(static_cast<std::size_t>(count));
    for (int k = 0; k < count; ++k) {
      made.points[static_cast<std::size_t>(k)].time =
          standardBegin + 1.0 + 0.01 * ((k * 37) % count);
    }
    return made;
  }

  void save(const LasSample& made, const char* name = "a.las") {
    std::ofstream(folder / name, std::ios::binary) << lasBytes(made);
  }

  ImportReport done() {
    told.clear();
    Watch watch;
    watch.message = [this](const auto& line) { told.push_back(line); };
    return importFlight(options, watch);
  }

  std::string refusal(std::optional<Error::Kind> kind = {}) {
    return refusalOf([this] { done(); }, kind);
  }

  TemporaryFolder folder;
  ImportSettings options;
  LasSample sample;
  std::vector<std::string> told;
  Morvane::ConsoleRedirection silence{[](std::string_view) {}};
};

TEST_F(Flight, BecomesStripsWhoseGeoreferencingGivesThePointsAgain) {
  const auto report = done();
  ASSERT_EQ(report.strips.size(), 1U);
  EXPECT_EQ(report.epsg, 32632U);
  EXPECT_TRUE(told.empty());
  const GridFile strip(report.strips[0].file);
  EXPECT_EQ(strip.week(), 2318U);
  EXPECT_EQ(strip.grid().attributes().text("SourceFile"), (folder / "a.las").string());
  const auto times = strip.world<double>("GPSTime").whole();
  EXPECT_TRUE(std::is_sorted(times->begin(), times->end()));
  const auto world = strip.world<point>("Positions").whole();
  const auto index = strip.world<std::uint64_t>("SourceIndex").whole();
  const auto amplitude = strip.world<double>("Amplitude").whole();
  for (std::size_t k = 0; k < world->size(); ++k) {
    const auto& one = sample.points[(*index)[k]];
    EXPECT_NEAR((*world)[k].x, sample.offset[0] + 0.01 * one.numbers[0], 1e-9);
    EXPECT_NEAR((*times)[k], one.time - standardBegin + begin, 1e-7);
    EXPECT_EQ((*amplitude)[k], one.intensity);
  }

  Velorn::Trajectory trajectory(report.trajectories);
  ASSERT_EQ(trajectory.importTrajectory(), "");
  Velorn::SolverParameters mounting({"a"}, Velorn::InputParameter());
  ASSERT_EQ(mounting.setEmptySections(options.leverArm, options.misalignment), "");
  std::vector<point> again(world->size());
  std::vector<vector> beams(world->size());
  ASSERT_EQ(scanner2world(mounting, trajectory, *strip.scanner<point>("Positions").whole(), *times,
                          2318, 0, again, beams, 0.0, false),
            "");
  const auto directions = strip.scanner<vector>("Waveforms.DirectionDelta").whole();
  for (std::size_t k = 0; k < world->size(); ++k) {
    EXPECT_LT(length(again[k] - (*world)[k]), 1e-7);
    EXPECT_LT(length({beams[k].x - (*directions)[k].x, beams[k].y - (*directions)[k].y,
                      beams[k].z - (*directions)[k].z}),
              1e-6);
    EXPECT_NEAR((*directions)[k].z, 800, 20);  // from the point up to the sensor
  }
}

TEST_F(Flight, IsPartedBySourceAndGap) {
  for (std::size_t k = 0; k < 50; ++k) sample.points[k].sourceId = 8;
  for (auto& one : sample.points) {
    if (one.sourceId == 7 && one.time > standardBegin + 2) one.time += 4;
  }
  save(sample);
  options.gap = 3;
  const auto report = done();
  ASSERT_EQ(report.strips.size(), 3U);
  EXPECT_EQ(report.strips[2].file.filename(), "a_3.kx");
  EXPECT_EQ(report.strips[2].points, 50U);
  EXPECT_EQ(report.strips[0].points + report.strips[1].points, 150U);
}

TEST_F(Flight, OverTheEndOfAWeekBecomesAStripAndATrajectoryOfEach) {
  write(tenSeconds(week - 5));
  for (auto& one : sample.points) one.time += week - 5 - begin + 3;  // 4 s after the first record
  save(sample);
  const auto report = done();
  ASSERT_EQ(report.strips.size(), 2U);
  ASSERT_EQ(report.trajectories.size(), 2U);
  EXPECT_EQ(report.strips[0].week + 1, report.strips[1].week);
  EXPECT_EQ(report.strips[0].points + report.strips[1].points, 200U);
  Velorn::Trajectory trajectory(report.trajectories);
  ASSERT_EQ(trajectory.importTrajectory(), "");
  for (const auto& strip : report.strips) {
    const GridFile file(strip.file);
    const auto beams = file.scanner<vector>("Waveforms.DirectionDelta").whole();
    const auto times = file.world<double>("GPSTime").whole();
    for (std::size_t k = 0; k < beams->size(); ++k) {
      EXPECT_NEAR((*beams)[k].z, 800, 20) << fmt::format("{:.12f}", (*times)[k]);
    }
  }
}

TEST_F(Flight, IsRefusedWithTheLikelyCauseWhenTheTrajectoryDoesNotCoverIt) {
  for (const auto& [shift, cause] : {std::pair(9.0 + 18.0 - 9.0, "18 s of leap seconds"),
                                     std::pair(2 * week, "another GPS week"),
                                     std::pair(500.0,
                                               "but the trajectory is from 407100.000 to "
                                               "407110.000 s of week 2318")}) {
    LasSample shifted = sample;
    for (auto& one : shifted.points) one.time += shift;
    save(shifted);
    options.week = 2318;
    EXPECT_THAT(refusal(), AllOf(HasSubstr("a.las: measured from"), HasSubstr(cause)));
  }
  EXPECT_FALSE(fs::exists(options.output));
}

TEST_F(Flight, IsRefusedForWhatItDoesNotSay) {
  const LasSample good = sample;
  sample.vlrs.clear();
  save(sample);
  EXPECT_THAT(refusal(), AllOf(HasSubstr("a.las: does not say its projection"), HasSubstr("--epsg"),
                               HasSubstr("25828 to 25837")));
  sample.vlrs = {geoKeys({{1024, 0, 1, 1}, {3072, 0, 1, 2056}})};
  save(sample);
  EXPECT_THAT(refusal(), HasSubstr("EPSG:2056 is none of the projections"));
  save(good);
  sample.vlrs = {geoKeys({{1024, 0, 1, 1}, {3072, 0, 1, 32633}})};
  save(sample, "b.las");
  options.strips.push_back(folder / "b.las");
  EXPECT_THAT(refusal(), HasSubstr("all strips must be in one zone"));
  options.strips.pop_back();
  options.epsg = 32633;
  EXPECT_THAT(refusal(), HasSubstr("is in EPSG:32632, but --epsg says 32633"));
  options.epsg.reset();
  sample = good;
  for (auto& one : sample.points) one.time += begin - standardBegin;
  sample.globalEncoding = 0;
  save(sample);
  EXPECT_THAT(refusal(), HasSubstr("--week"));
  options.week = 2318;
  EXPECT_EQ(refusal(), "not refused");
  EXPECT_THAT(refusal(), HasSubstr("--overwrite"));
  for (auto& one : sample.points) one.time = begin + 1;
  save(sample);
  EXPECT_THAT(refusal(), HasSubstr("all 200 points have the time 407101"));
  save(lasSample(2, 0));
  EXPECT_THAT(refusal(), HasSubstr("points of format 0 have no GPS time"));
}

TEST_F(Flight, TellsOfRepairsAndGapsOfItsTrajectory) {
  auto records = tenSeconds(begin);
  records.erase(records.begin() + 21, records.begin() + 35);
  std::swap(records[3], records[4]);
  records.push_back(records.back());
  write(records);
  done();
  ASSERT_EQ(told.size(), 3U);
  EXPECT_THAT(told[0], HasSubstr("1 records out of order of time"));
  EXPECT_THAT(told[1], HasSubstr("1 records with a time that was there already"));
  EXPECT_THAT(told[2], AllOf(HasSubstr("no record for 1.500 s"), HasSubstr("a.las")));
}

TEST_F(Flight, BringsItsControl) {
  std::ofstream(folder / "control.csv") << "E,N,h,nx,ny,nz\n500001,5341002,0,0,0.1,1\n";
  options.control = folder / "control.csv";
  options.controlRadius = 0.5;
  const auto report = done();
  EXPECT_EQ(report.patches, 1U);
  EXPECT_GT(report.groundTruthPoints, 9U);
  const GridFile truth(options.output / "ground_truth.kx");
  EXPECT_EQ(truth.size(), report.groundTruthPoints);
}

TEST_F(Flight, IsDecompressedByACommand) {
  std::string compressed = lasBytes(sample);
  compressed[104] = static_cast<char>(compressed[104] | '\x80');
  std::ofstream(folder / "a.laz", std::ios::binary) << compressed;
  options.strips = {folder / "a.laz"};
  EXPECT_THAT(refusal(), HasSubstr("--decompress"));
  // The stub takes the bit away again.
  std::ofstream(folder / "unpack")
      << "#!/bin/sh\ncp \"$1\" \"$2\" && printf '\\006' | dd of=\"$2\" "
         "bs=1 seek=104 conv=notrunc 2>/dev/null\n";
  chmod((folder / "unpack").c_str(), 0700);
  options.decompress = (folder / "unpack").string() + " {in} {out}";
  const auto report = done();
  EXPECT_EQ(report.strips.at(0).points, 200U);
  EXPECT_EQ(report.strips[0].source, options.output / "decompressed/a.las");
  options.overwrite = true;
  options.decompress = "false {in} {out}";
  EXPECT_THAT(refusal(), HasSubstr("ended with status 1"));
  options.decompress = "no-such-program {in} {out}";
  EXPECT_THAT(refusal(), HasSubstr("no-such-program cannot be started: "));
  options.decompress = "cp {in}";
  EXPECT_THAT(refusal(Error::BadSettings), HasSubstr("must hold {in} and {out}"));
  options.decompress = "tail -f {in} {out}";  // does not end by itself
  Watch impatient;
  impatient.isCancelled = [questions = 0]() mutable { return ++questions == 5; };
  EXPECT_THAT(refusalOf([&] { importFlight(options, impatient); }, Error::Interrupted),
              HasSubstr("cancelled while"));
  EXPECT_EQ(namesIn(options.output / "decompressed").size(), 1U);  // nothing unfinished is left
}

TEST_F(Flight, IsReadFromFilesThatAConverterCompressed) {
  const auto isInstalled = [](const std::string& program) {
    return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
  };
  const std::string las = (folder / "a.las").string(), laz = (folder / "a.laz").string();
  std::string compress;
  if (isInstalled("laszip")) {
    compress = fmt::format("laszip -i '{}' -o '{}'", las, laz);
    options.decompress = "laszip -i {in} -o {out}";
  } else if (isInstalled("pdal")) {
    compress = fmt::format("pdal translate '{}' '{}'", las, laz);
    options.decompress = "pdal translate {in} {out}";
  } else {
    GTEST_SKIP() << "neither laszip nor pdal is installed";
  }
  ASSERT_EQ(std::system(compress.c_str()), 0);
  const auto usual = done();
  options.strips = {laz};
  options.output = folder / "unpacked";
  const auto report = done();
  EXPECT_EQ(report.epsg, usual.epsg);
  const auto places = [](const ImportReport& one) {
    return *GridFile(one.strips.at(0).file).world<point>("Positions").whole();
  };
  const auto expected = places(usual), found = places(report);
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t k = 0; k < found.size(); ++k) {
    EXPECT_LT(length(found[k] - expected[k]), 1e-6);
  }
}

}  // namespace
