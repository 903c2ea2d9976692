// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Results whose difference from the truth is known: the truth itself, a shifted one, the delivered
// strips.
#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

#include "flight/comparison/TrueWorld.h"
#include "flight/comparison/WorldErrors.h"
#include "flight/records/RunFolder.h"
#include "flight/records/RunState.h"
#include "flight/strips/OrFail.h"
#include "platform/plome/StringList.h"
#include "tests/flight/simulation/TrueWorld.h"
#include "tests/support/Refusal.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/FileContainer.h>
#include <velorn/SolverParameters.h>
#include <velorn/flight/Compare.h>
#include <velorn/flight/Containers.h>
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace fs = std::filesystem;
using Comparison::WorldErrors;
using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using testing::AllOf, testing::HasSubstr;
using Velorn::TerrainType;

namespace {

class Comparing : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    flightFolder = new TemporaryFolder;
    auto options = smallFlight();
    options.correspondences = 4000;
    options.slowErrors = false;
    make(flightFolder->path(), options);
  }
  static void TearDownTestSuite() { delete flightFolder; }

  Comparing() {
    fs::create_directories(run / "05_adjusted");
    fs::copy(flight / "03_correspondences", run / "03_correspondences");
  }

  /// Results that lie off the truth by `shift`.
  void writeResult(const vector& shift, std::size_t firstStrip = 0) const {
    for (std::size_t i = firstStrip; i < truth.strips.size(); ++i) {
      auto world = trueWorld(flight, i);
      for (point& p : world) p = p + shift;
      saveResult(i, std::move(world));
    }
  }

  void saveResult(std::size_t i, std::vector<point> world) const {
    StripColumns columns;
    columns.week = truth.week;
    columns.times = OneGridFile(truth.strips[i].file).world<double>("GPSTime");
    columns.world = std::move(world);
    saveStrip(run / "05_adjusted" / (truth.strips[i].file.stem().string() + "_SA.kx"), columns);
  }

  /// The files of an adjustment that left the mounting as it is in the trajectory's file.
  void writeNominalModel(const std::string& suffix) const {
    Velorn::InputParameter configuration;
    configuration.ParameterPath = run / "00_parameter";
    fs::create_directories(configuration.ParameterPath);
    const auto names = std::make_shared<Plome::StringList>();
    for (const auto& strip : truth.strips) names->add(strip.file.string());
    Velorn::FileContainer files;
    ASSERT_EQ(files.add(names, flight / "ground_truth.kx", truth.trajectory), "");
    files.writeStripID(configuration.ParameterPath / ("StripID" + suffix), false);
    const auto trajectory = trajectoryIn(flight);
    Velorn::SolverParameters parameters(files.getStripFiles(), configuration);
    ASSERT_EQ(parameters.setSections("LINEAR", {}, trajectory.getLeverarm(),
                                     trajectory.getMisalignment(), suffix, {}, {}),
              "");
    parameters.writeParameterFile(suffix);
  }

  ComparisonReport compared() const { return compare(flight, run.path(), {}, {}); }

  static std::string refusal(const fs::path& truthFolder, const fs::path& result) {
    return refusalOf([&] { compare(truthFolder, result, {}, {}); }, {});
  }

  inline static TemporaryFolder* flightFolder = nullptr;
  const fs::path flight = flightFolder->path();
  const Comparison::Truth truth = Comparison::readTruth(flight);
  const TemporaryFolder run;
};

}  // namespace

TEST_F(Comparing, TheTruthItselfHasNoErrorAndFitsToTheNoise) {
  writeResult({0, 0, 0});
  const auto report = compared();
  const auto& all = report.world.kinds.front();
  EXPECT_GT(all.after.points, 19'000u);
  EXPECT_EQ(all.after.rms.horizontal, 0.0);
  EXPECT_EQ(all.after.median.vertical, 0.0);
  EXPECT_GT(all.before.rms.horizontal, 0.1);
  std::size_t ofKinds = 0;
  for (std::size_t k = 1; k < report.world.kinds.size(); ++k) {
    EXPECT_GT(report.world.kinds[k].after.points, 100u) << report.world.kinds[k].name;
    ofKinds += report.world.kinds[k].after.points;
  }
  EXPECT_EQ(ofKinds, all.after.points);
  EXPECT_EQ(report.world.strips.size(), 4u);

  EXPECT_GT(report.pairs.correspondences, 3000u);
  EXPECT_EQ(report.pairs.notFound + report.groundTruth.notFound, 0u);
  EXPECT_GT(report.pairs.rawBefore, 0.1);
  // These correspondences are of one plane, with its true normal: nothing but noise is left.
  EXPECT_NEAR(report.pairs.rawAfter / report.pairs.floor, 1.0, 0.05);
  EXPECT_NEAR(report.groundTruth.rawAfter / report.groundTruth.floor, 1.0, 0.15);
  EXPECT_NEAR(report.pairs.floor, 0.028, 0.002);  // two ranges with 2 cm, at 0 to 50 degrees
  EXPECT_EQ(report.pairs.rawTrue, report.pairs.rawAfter);
  EXPECT_NEAR(report.pairs.blockTrue, report.pairs.rawTrue, 1e-9);  // not moved onto planes
  EXPECT_FALSE(report.files);
  EXPECT_THAT(textOf(report), HasSubstr("no parameter files"));
}

TEST_F(Comparing, AShiftIsFoundAndTakenOff) {
  writeResult({0.3, -0.4, 0.25});
  const auto report = compared();
  EXPECT_NEAR(report.world.shiftAfter.x, 0.3, 1e-8);
  EXPECT_NEAR(report.world.shiftAfter.y, -0.4, 1e-8);
  for (const auto& rows : {report.world.kinds, report.world.strips}) {
    for (const auto& row : rows) {
      EXPECT_NEAR(row.after.rms.horizontal, 0.5, 1e-8) << row.name;
      EXPECT_NEAR(row.after.median.vertical, 0.25, 1e-7) << row.name;
      EXPECT_LT(row.after.rmsWithoutShift.horizontal, 1e-6) << row.name;
      EXPECT_LT(row.after.rmsWithoutShift.vertical, 1e-6) << row.name;
    }
  }
  EXPECT_NEAR(report.pairs.rawAfter, report.pairs.rawTrue, 1e-6);  // both sides moved alike
  EXPECT_GT(report.groundTruth.rawAfter, report.groundTruth.rawTrue + 0.1);
}

TEST_F(Comparing, TheModelOfTheDeliveredFilesGivesTheDeliveredFitAndMounting) {
  for (std::size_t i = 0; i < truth.strips.size(); ++i) {
    saveResult(i, OneGridFile(truth.strips[i].file).world<point>("Positions"));
  }
  writeNominalModel("_1.txt");
  writeNominalModel("_newer.txt");
  RunState state;
  state.phase = RunState::Phase::finished;
  state.model = RunFolder({}).modelOf("_1.txt");
  state.write(run.path());
  const auto report = compared();
  EXPECT_EQ(report.world.kinds[0].after.rms.vertical, report.world.kinds[0].before.rms.vertical);
  EXPECT_EQ(report.pairs.rawAfter, report.pairs.rawBefore);
  EXPECT_NEAR(report.pairs.blockAfter, report.pairs.blockBefore, 1e-7);
  ASSERT_EQ(report.globals.size(), 12u);
  for (const auto& figure : report.globals) {
    EXPECT_NEAR(figure.estimated, figure.nominal, 1e-12) << figure.name;
    EXPECT_GT(std::abs(figure.real - figure.nominal), 1e-3) << figure.name;
  }
  ASSERT_EQ(report.sums.size(), 3u);
  EXPECT_NEAR(report.sums[0].estimated, 0.21 + 0.0225, 3.4e-3);  // 18 cm seen from 400 to 540 m
  // With the offset, the scale at 90°, the lever arm seen from 420 m, and the strips' mean roll.
  EXPECT_NEAR(report.sums[0].real, 0.26 + 0.01 + 0.009 + 0.0314, 0.01);
  EXPECT_NEAR(report.sums[2].real, 0.44 + 0.1, 0.01);

  const auto json = nlohmann::json::parse(documentOf(report));
  EXPECT_EQ(json["pairs"]["measured"]["after_m"], report.pairs.rawAfter);
  EXPECT_EQ(json["world"]["surfaces"][0]["name"], "all");
  EXPECT_EQ(json["globals"].size(), 12u);
  EXPECT_EQ(json["parameters"], (run / "00_parameter").string() + "/Parameter_1.txt");
  fs::remove(run / "00_parameter/StripID_1.txt");
  EXPECT_THAT(refusal(flight, run.path()), HasSubstr("StripID_1.txt: no such file"));
  RunState{}.write(run.path());
  EXPECT_THAT(refusal(flight, run.path()), HasSubstr("a run is going on there"));
}

TEST_F(Comparing, PointsThatTheBlocksHaveMovedAreJudgedAsMeasuredToo) {
  writeResult({0, 0, 0});
  const auto asMeasured = compared().pairs;
  const auto storage = std::make_shared<Strandel::MyStorage>(0, 0, 0, 1);
  for (const auto& entry : fs::directory_iterator(run / "03_correspondences")) {
    const Velorn::CorrespondenceBlock block(entry.path(), storage);
    if (block.isGroundTruth()) continue;
    Velorn::CorrespondenceBlock moved(entry.path(), false, truth.week, truth.week, storage);
    for (std::uint32_t k = 0; k < block.size(); ++k) {
      auto [first, second] = block.get(k);
      const auto s = first.scannerPosition - point{};
      first.scannerPosition = first.scannerPosition + (0.1 / std::sqrt(dot(s, s))) * s;
      moved.add(first, second);
    }
    orFail(moved.save());
  }
  const auto pairs = compared().pairs;
  EXPECT_EQ(pairs.rawAfter, asMeasured.rawAfter);
  EXPECT_EQ(pairs.floor, asMeasured.floor);
  EXPECT_GT(pairs.blockTrue, 0.09);
  EXPECT_LT(pairs.blockTrue, std::hypot(0.1, asMeasured.blockTrue));  // 10 cm along the beam
}

TEST_F(Comparing, NamesStripsWithoutResultAndLeavesTheirCorrespondencesOut) {
  writeResult({0, 0, 0}, 1);
  const auto report = compared();
  EXPECT_THAT(report.world.missing, testing::ElementsAre("strip_01.kx"));
  EXPECT_EQ(report.world.strips.size(), 3u);
  EXPECT_GT(report.pairs.notFound, 100u);
  EXPECT_GT(report.pairs.correspondences, 100u);
  EXPECT_THAT(textOf(report),
              AllOf(HasSubstr("not adjusted: strip_01.kx"), HasSubstr(" left out: ")));
}

TEST_F(Comparing, RefusesFoldersThatAreNotWhatTheyShouldBeByName) {
  EXPECT_THAT(refusal(run.path(), run.path()),
              AllOf(HasSubstr(run.path().string()), HasSubstr("has no truth.json")));
  EXPECT_THAT(refusal(flight, run.path()), HasSubstr("strip_01_SA.kx and so on"));
  EXPECT_THAT(refusal(flight, run / "no/such"), HasSubstr("no/such/05_adjusted"));

  writeResult({0, 0, 0});
  const auto times = OneGridFile(truth.strips[0].file).world<double>("GPSTime");
  StripColumns other;
  other.times = {times.begin(), times.end() - 1};
  other.world.resize(other.times.size());
  saveStrip(run / "05_adjusted/strip_01_SA.kx", other);
  EXPECT_THAT(refusal(flight, run.path()),
              AllOf(HasSubstr("strip_01_SA.kx"), HasSubstr("other GPS times")));
  other.times = times;
  other.world.resize(times.size());
  other.scanner.resize(times.size());
  saveStrip(run / "05_adjusted/strip_01_SA.kx", other);
  EXPECT_THAT(refusal(flight, run.path()), HasSubstr("other scanner coordinates"));

  fs::create_directory(run / "flight");
  fs::copy(flight / "truth", run / "flight/truth", fs::copy_options::recursive);
  writeContent(run / "flight/truth.json", "{\"week\": 7}");
  EXPECT_THAT(refusal(run / "flight", run.path()), HasSubstr("flight/truth.json: is not as"));
}

TEST(WorldErrors, AreSummedUpBySurfaceAndByStripWithAndWithoutTheMeanShift) {
  WorldErrors errors(2);
  errors.add(0, TerrainType::ROOF, {3.5, 4.5, -2.0});
  errors.add(0, TerrainType::FLAT, {0.5, 0.5, 1.0});
  errors.add(1, TerrainType::FLAT, {0.5, -3.5, 4.0});
  errors.add(1, TerrainType::FLAT, {-2.5, 0.5, -1.0});
  errors.add(1, TerrainType::FLAT, {std::nan(""), 0.0, 0.0});
  EXPECT_EQ(errors.notFinite(), 1u);
  EXPECT_EQ(errors.shift().x, 0.5);
  EXPECT_EQ(errors.shift().y, 0.5);
  EXPECT_EQ(errors.shift().z, 0.5);

  const auto roof = errors.ofKind(TerrainType::ROOF);
  EXPECT_EQ(roof.points, 1u);
  EXPECT_NEAR(roof.rms.horizontal, std::hypot(3.5, 4.5), 1e-14);
  EXPECT_NEAR(roof.rmsWithoutShift.horizontal, 5.0, 1e-14);  // 3 and 4
  EXPECT_NEAR(roof.rmsWithoutShift.vertical, 2.5, 1e-14);

  const auto second = errors.ofStrip(1);
  EXPECT_EQ(second.points, 2u);
  EXPECT_NEAR(second.rms.vertical, std::sqrt(17.0 / 2), 1e-14);
  EXPECT_NEAR(second.rmsWithoutShift.horizontal, std::sqrt((16.0 + 9.0) / 2), 1e-14);

  const auto all = errors.all();
  EXPECT_EQ(all.points, 4u);
  EXPECT_EQ(all.median.vertical, 2.0);  // of 1, 1, 2, 4
  EXPECT_EQ(errors.ofKind(TerrainType::SLOPE).points, 0u);
  EXPECT_TRUE(std::isnan(errors.ofKind(TerrainType::SLOPE).rms.vertical));
}
