// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <numeric>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "host/Failure.h"
#include "host/exporting/Export.h"
#include "host/georeferencing/Job.h"
#include "host/importing/Import.h"
#include "host/pointcloud/GridFile.h"
#include "host/pointcloud/LasFile.h"
#include "host/pointcloud/TrajectoryExport.h"
#include "platform/morvane/Console.h"
#include "platform/tessaly/TransverseMercator.h"
#include "tests/support/LasBytes.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/Georeferencing.h>

namespace {

namespace fs = std::filesystem;
using Exporting::ExportOptions, Exporting::ExportReport;
using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;
using PointCloud::SbetRecord;
using testing::AllOf;
using testing::HasSubstr;

constexpr double week = 604800.0;
constexpr std::int64_t weekNumber = 2318;
constexpr std::array<double, 12> globals{0, 0, 0, 0, 0, 0, 0.001, -0.002, 0.003, 0.1, -0.2, 0.3};
constexpr point leverArm{globals[9], globals[10], globals[11]};

struct Silent : Kestrum::LoaderProgress {
  void report(const std::string& /*text*/, std::size_t /*current*/,
              std::size_t /*total*/) override {}
};

double length(const vector& v) {
  return std::hypot(v.x, v.y, v.z);
}

/// Linear corrections of one strip: entry 4 j + m multiplies dt^m of component j, positions first.
std::array<double, 24> correctionsOf(std::size_t strip) {
  const double sign = strip == 0 ? 1.0 : -1.0;
  std::array<double, 24> values{};
  values[0] = sign * 1.25;    // easting [m]
  values[1] = sign * 0.02;    // [m/s]
  values[4] = -0.5;           // northing
  values[8] = 0.25;           // height
  values[9] = 0.01;           // [m/s]
  values[12] = sign * 0.002;  // roll [rad]
  values[17] = 0.0005;        // pitch [rad/s]
  values[20] = 0.001;         // yaw
  return values;
}

/// Ten seconds with two strips, from the 1st to the 3rd and from the 6th to the 8th, imported and
/// georeferenced with an adjustment. Between the strips a GPS week ends.
class Flight : public testing::Test {
 protected:
  Flight() {
    for (int k = 0; k <= 100; ++k) {
      flown.push_back({begin + 0.1 * k, 0.8412 + 1e-6 * k, 0.15708, 800.0, 0.01, -0.02, 6.28});
    }
    PointCloud::writeSbet(folder / "flight.sbet", flown);
    saveLas("a.las", 1.0);
    saveLas("b.las", 6.0);
    import();
    saveModel();
    georeference();
    options.strips = {folder / "05_adjusted/a_SA.kx", folder / "05_adjusted/b_SA.kx"};
    options.output = folder / "delivery";
  }

  /// Of a point of a source, after the first record of the trajectory [s].
  static double timeOf(std::uint64_t number, double first) {
    return first + 0.01 * static_cast<double>((number * 37) % 200);
  }

  void saveLas(const std::string& name, double first) const {
    LasSample made = lasSample(4, 6, 200);
    made.globalEncoding = 1;
    made.offset = {500000.0, 5341000.0, 0.0};
    made.vlrs = {geoKeys({{1024, 0, 1, 1}, {3072, 0, 1, 32632}})};
    for (int k = 0; k < 200; ++k) {
      auto& one = made.points[static_cast<std::size_t>(k)];
      one.numbers = {100 * (k % 17), 300 * (k % 31), 100 * (k % 5)};
      one.time = static_cast<double>(weekNumber) * week + begin - 1e9 +
                 timeOf(static_cast<std::uint64_t>(k), first);
      one.sourceId = 7;
    }
    writeContent(folder / name, lasBytes(made));
  }

  void import() {
    Importing::ImportOptions from;
    from.strips = {folder / "a.las", folder / "b.las"};
    from.trajectory.files = {folder / "flight.sbet"};
    from.output = folder / "flight";
    Silent silent;
    imported = importFlight(from, silent, [](const std::string&) {});
  }

  void saveModel() {
    std::string sections, ids,
        parameters =
            "#Number of local parameters: 48\n#Number of global parameters: 12 (see last line)\n\n";
    const auto add = [&](const auto& values) {
      for (const double value : values) parameters += fmt::format("{:.15f} ", value);
    };
    for (std::size_t k = 0; k < 2; ++k) {
      starts.push_back(imported.strips.at(k).first - 0.5);
      ids += fmt::format("id: {} file: elsewhere/{}.kx type: strip\n", k, k == 0 ? "a" : "b");
      sections += fmt::format("StripID: {0}, sectionID: {0}, t: {1:.15f}, type: LINEAR\n", k,
                              starts.back());
      add(correctionsOf(k));
      parameters += "\n";
    }
    add(globals);
    model = {folder / "00_parameter/Sections.txt", folder / "00_parameter/Parameter.txt",
             folder / "00_parameter/StripID.txt"};
    fs::create_directory(folder / "00_parameter");
    writeContent(model.sections, sections);
    writeContent(model.parameters, parameters);
    writeContent(model.stripIds, ids);
  }

  void georeference() {
    GeoreferencingJob job;
    for (const auto& strip : imported.strips) job.strips.push_back(strip.file);
    job.trajectories = imported.trajectories;
    job.outputFolder = folder / "05_adjusted";
    job.sections = model.sections;
    job.parameters = model.parameters;
    job.stripIds = model.stripIds;
    checkJob(job);
    Silent silent;
    EXPECT_EQ(runJob(job, silent, [](const auto&) {}).faults, 0U);
  }

  void takeModel() {
    options.model = model;
    options.trajectories = imported.trajectories;
  }

  ExportReport done() {
    told.clear();
    Silent silent;
    return exportFlight(options, silent, [this](const auto& line) { told.push_back(line); });
  }

  std::string refusal() {
    try {
      done();
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "none";
  }

  /// A strip of points with these numbers in a source.
  fs::path stripFrom(const std::string& source, std::vector<std::uint64_t> numbers) const {
    PointCloud::StripColumns columns;
    columns.week = weekNumber;
    columns.world.resize(numbers.size(), point{500001.0, 5341002.0, 3.0});
    for (const auto number : numbers) columns.times.push_back(begin + timeOf(number, 1.0));
    columns.sourceIndex = std::move(numbers);
    columns.sourceFile = source;
    PointCloud::saveStrip(folder / "made.kx", std::move(columns));
    return folder / "made.kx";
  }

  TemporaryFolder folder;
  const double begin = week - 4.5;
  std::vector<SbetRecord> flown;
  Importing::ImportReport imported;
  std::vector<double> starts;  // of the sections [s of week]
  ModelFiles model;
  ExportOptions options;
  std::vector<std::string> told;
  Morvane::ConsoleRedirection silence{[](std::string_view) {}};
};

std::vector<std::string> recordsIn(const PointCloud::LasFile& file) {
  std::vector<std::string> records;
  const std::size_t size = file.header().recordLength;
  file.readBytes([&](std::uint64_t, std::uint64_t count, const char* bytes) {
    for (std::size_t k = 0; k < count; ++k) records.emplace_back(bytes + k * size, size);
  });
  return records;
}

std::vector<point> placesIn(const PointCloud::LasFile& file) {
  std::vector<point> places;
  file.read([&](std::uint64_t, std::span<const PointCloud::LasPoint> points) {
    for (const auto& one : points) places.push_back(one.place);
  });
  return places;
}

TEST_F(Flight, BecomesLasFilesThatDifferFromTheirSourcesByTheAdjustedCoordinatesAlone) {
  const auto report = done();
  ASSERT_EQ(report.files.size(), 2U);  // without an adjustment nothing but the strips
  for (const std::string name : {"a", "b"}) {
    const PointCloud::LasFile source(folder / (name + ".las")),
        made(options.output / (name + ".las"));
    const auto before = recordsIn(source), after = recordsIn(made);
    ASSERT_EQ(after.size(), 200U);
    constexpr std::size_t coordinates = 12;
    for (std::size_t k = 0; k < after.size(); ++k) {
      EXPECT_EQ(after[k].substr(coordinates), before[k].substr(coordinates));
    }
    const PointCloud::GridFile strip(folder / ("05_adjusted/" + name + "_SA.kx"));
    const auto index = strip.world<std::uint64_t>("SourceIndex").whole();
    const auto adjusted = strip.world<point>("Positions").whole();
    const auto was = placesIn(source), is = placesIn(made);
    for (std::size_t k = 0; k < index->size(); ++k) {
      const vector moved = is[(*index)[k]] - (*adjusted)[k];
      EXPECT_LE(std::max({std::abs(moved.x), std::abs(moved.y), std::abs(moved.z)}), 0.005 + 1e-9);
      EXPECT_GT(length(is[(*index)[k]] - was[(*index)[k]]), 0.5);
    }
  }
}

TEST_F(Flight, HasATrajectoryThatIsCorrectedWhileStripsWereMeasured) {
  takeModel();
  done();
  const auto zone = Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(32632);
  const auto projected = [&](const SbetRecord& record) {
    return Tessaly::transverseMercatorProjection({record.longitude, record.latitude, record.height},
                                                 zone, false);
  };
  const auto records = PointCloud::readSbet(options.output / "trajectory.sbet");
  ASSERT_EQ(records.size(), flown.size());
  for (std::size_t k = 0; k < records.size(); ++k) {
    const SbetRecord &was = flown[k], &is = records[k];
    EXPECT_NEAR(is.time, was.time, 1e-9);
    const double since = 0.1 * static_cast<double>(k);
    const auto within = [&](double first, double last) { return since > first && since < last; };
    const bool isA = within(0.95, 3.0), isB = within(5.95, 8.0);
    const bool isNone = since < 0.85 || within(3.15, 5.85) || since > 8.15;
    if (!isA && !isB && !isNone) continue;  // which records are next to a strip hangs on roundings
    const auto values = correctionsOf(isB ? 1 : 0);
    const double dt = was.time - (isB ? starts[1] + week : starts[0]);
    std::array<double, 6> expected{};
    for (std::size_t j = 0; j < 6 && !isNone; ++j) {
      expected[j] = values[4 * j] + values[4 * j + 1] * dt;
    }
    const vector moved = projected(is) - projected(was);
    EXPECT_NEAR(moved.x, expected[0], 1e-7);
    EXPECT_NEAR(moved.y, expected[1], 1e-7);
    EXPECT_NEAR(moved.z, expected[2], 1e-7);
    EXPECT_NEAR(is.roll - was.roll, expected[3], 1e-12);
    EXPECT_NEAR(is.pitch - was.pitch, expected[4], 1e-12);
    EXPECT_NEAR(is.heading - was.heading, expected[5], 1e-12);
  }
}

TEST_F(Flight, IsGeoreferencedByItsTrajectoryAndMountingAsByTheAdjustment) {
  takeModel();
  done();
  const auto mounting =
      nlohmann::json::parse(std::ifstream(options.output / "mounting.json"), nullptr, true);
  const auto angle = [&](const char* name) { return mounting["misalignment"][name].get<double>(); };
  const auto arm = [&](const char* name) { return mounting["lever_arm"][name].get<double>(); };
  const point misalignment{angle("roll_deg"), angle("pitch_deg"), angle("yaw_deg")},
      lever{arm("forward_m"), arm("right_m"), arm("down_m")};
  EXPECT_NEAR(misalignment.y, -0.002 * 180 / 3.14159265358979, 1e-12);
  EXPECT_EQ(lever.z, leverArm.z);
  EXPECT_THAT(
      contentOf(options.output / "mounting.txt"),
      AllOf(HasSubstr("lever_arm_forward     0.1 m\n"), HasSubstr("scale_angle_2         0 1\n")));

  fs::create_directory(folder / "again");
  const auto containers =
      Importing::saveTrajectories({PointCloud::readSbet(options.output / "trajectory.sbet"), {}},
                                  weekNumber, 32632, lever, misalignment, folder / "again");
  Velorn::Trajectory trajectory(containers);
  ASSERT_EQ(trajectory.importTrajectory(), "");
  Velorn::SolverParameters parameters({"strip"}, Velorn::InputParameter());
  ASSERT_EQ(parameters.setEmptySections(lever, misalignment), "");
  for (const auto& container : options.strips) {
    const PointCloud::GridFile strip(container);
    const auto adjusted = strip.world<point>("Positions").whole();
    std::vector<point> again(adjusted->size());
    std::vector<vector> beams(adjusted->size());
    ASSERT_EQ(scanner2world(parameters, trajectory, *strip.scanner<point>("Positions").whole(),
                            *strip.world<double>("GPSTime").whole(), strip.week(), 0, again, beams,
                            0.0, false),
              "");
    for (std::size_t k = 0; k < again.size(); ++k) {
      EXPECT_LT(length(again[k] - (*adjusted)[k]), 1e-6);
    }
  }
}

TEST_F(Flight, TellsOfStripsWithoutCorrectionsAndCountsTheCorrectedRecords) {
  takeModel();
  options.strips.pop_back();
  const auto report = done();
  ASSERT_EQ(told.size(), 1U);
  EXPECT_THAT(told[0], HasSubstr("1 of 2 strips of the adjustment are not among those named"));
  const auto records = PointCloud::readSbet(options.output / "trajectory.sbet");
  const auto corrected =
      std::inner_product(records.begin(), records.end(), flown.begin(), 0, std::plus<>(),
                         [](const SbetRecord& a, const SbetRecord& b) {
                           return std::abs(a.heading - b.heading) > 1e-6 ? 1 : 0;
                         });
  EXPECT_THAT(report.files.at(2).content,
              HasSubstr(fmt::format("{} of 101 records corrected", corrected)));
}

TEST_F(Flight, TellsOfTwoStripsOfOneTimeAndCorrectsByTheOneNamedFirst) {
  takeModel();
  options.wishes = Exporting::Wishes{false, false, true};
  done();
  const auto undisputed = contentOf(options.output / "trajectory.txt");
  PointCloud::StripColumns other;
  other.week = weekNumber;
  other.world.resize(2);
  other.times = {begin + 2.05, begin + 2.35};
  for (const std::string name : {"b.kx", "stranger.kx"}) {
    PointCloud::saveStrip(folder / name, other);
  }
  options.output = folder / "disputed";
  options.strips = {options.strips[0], folder / "b.kx", folder / "stranger.kx"};
  const auto report = done();
  ASSERT_EQ(told.size(), 2U);
  EXPECT_THAT(told[0], HasSubstr("stranger.kx: not in the adjustment"));
  EXPECT_THAT(told[1], HasSubstr("trajectory: 3 records belong to two strips"));
  const auto disputed = contentOf(options.output / "trajectory.txt");
  const auto ofA = [](const std::string& text) { return text.substr(0, text.find("\n604800")); };
  EXPECT_EQ(ofA(disputed), ofA(undisputed));
  EXPECT_NE(disputed, undisputed);  // nothing corrects b's own time any more
}

TEST_F(Flight, IsFoundInTheRootOfItsRun) {
  const fs::path steps = folder.path() / Velorn::InputParameter().getStatusPath() / "steps";
  fs::create_directories(steps);
  nlohmann::json record;
  for (const auto& file : imported.trajectories) {
    record["key"]["trajectory"].push_back({{"path", file.string()}});
  }
  writeContent(steps / "adjust_1.json", record.dump());
  writeContent(steps / "match_1.json", "{\"key\": {}}");
  options.strips.clear();
  completeFromRoot(options, folder.path(), folder / "05_adjusted");
  EXPECT_EQ(options.strips.size(), 2U);
  EXPECT_EQ(options.trajectories, imported.trajectories);
  EXPECT_EQ(done().files.size(), 6U);
  fs::remove(imported.trajectories[0]);
  options.trajectories.clear();
  EXPECT_THROW(completeFromRoot(options, folder.path(), folder / "05_adjusted"), Failure);
}

TEST_F(Flight, IsRefusedWithoutItsSourcesAndLeavesThemAlone) {
  const std::string source = contentOf(folder / "a.las");
  options.overwrite = true;
  options.output = folder.path();
  EXPECT_THAT(refusal(), AllOf(HasSubstr("a.las: points of"), HasSubstr("--output")));
  EXPECT_EQ(contentOf(folder / "a.las"), source);
  options.output = folder / "delivery";
  fs::create_directory(folder / "moved");
  fs::rename(folder / "a.las", folder / "moved/a.las");
  EXPECT_THAT(refusal(), AllOf(HasSubstr("a_SA.kx: its points come from"), HasSubstr("a.las"),
                               HasSubstr("--source-folder")));
  EXPECT_FALSE(fs::exists(options.output));
  options.sourceFolder = folder / "moved";
  EXPECT_EQ(refusal(), "none");
  options.overwrite = false;
  EXPECT_THAT(refusal(), HasSubstr("--overwrite"));
  options.strips.push_back(options.strips[0]);
  EXPECT_THAT(refusal(), HasSubstr("would both become"));
  options.strips = {options.strips[0]};
  writeContent(folder / "moved/a.las", lasBytes(lasSample(4, 6, 199)));
  EXPECT_THAT(refusal(), AllOf(HasSubstr("has 200 points"), HasSubstr("only 199")));
}

TEST_F(Flight, IsRefusedForPointsThatAreNotThoseOfItsSource) {
  const std::string source = folder / "a.las";
  options.strips = {stripFrom("", {})};
  EXPECT_THAT(refusal(),
              AllOf(HasSubstr("made.kx: names no SourceFile"), HasSubstr("velorn import")));
  options.strips = {stripFrom(source, {3, 200})};
  EXPECT_THAT(refusal(), AllOf(HasSubstr("made.kx"), HasSubstr("names point 200, counted from 0"),
                               HasSubstr("which has 200")));
  options.strips = {stripFrom(source, {9, 3, 9})};
  EXPECT_THAT(refusal(), HasSubstr("two points come from point 9 of"));
  EXPECT_FALSE(fs::exists(options.output / "made.las"));
  options.strips = {stripFrom(source, {9, 3})};
  saveLas("a.las", 1.01);
  EXPECT_THAT(refusal(), HasSubstr("point 3, counted from 0, of"));
  saveLas("a.las", 1.0);
  EXPECT_EQ(refusal(), "none");
  EXPECT_EQ(PointCloud::LasFile(options.output / "made.las").header().count, 2U);
}

TEST_F(Flight, IsRefusedWithoutWhatItsAdjustmentUsed) {
  options.wishes = Exporting::Wishes{false, true, true};
  EXPECT_THAT(refusal(), HasSubstr("--strip-ids"));
  options.model = model;
  EXPECT_THAT(refusal(), HasSubstr("--trajectory"));
  options.trajectories = {imported.trajectories.at(0)};
  EXPECT_THAT(refusal(),
              AllOf(HasSubstr("b_SA.kx: measured from"), HasSubstr("the trajectory is")));
  options.trajectories = imported.trajectories;
  options.strips[1] = options.strips[0];
  EXPECT_THAT(refusal(), HasSubstr("both are the strip a.kx of the adjustment"));
  EXPECT_FALSE(fs::exists(options.output));
}

}  // namespace
