// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "flight/matching/GroundTruth.h"
#include "flight/records/FinishedRun.h"
#include "flight/report/SummaryText.h"
#include "platform/morvane/Console.h"
#include "tests/flight/chain/SmallRun.h"
#include "tests/flight/matching/MatchFiles.h"
#include "tests/flight/simulation/TrueWorld.h"
#include <velorn/flight/Containers.h>

using namespace Velorn::Flights;

namespace {

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(SeveralRuns, AdjustsAFlightAndSkipsWhatIsDone) {
  const auto summary = done();
  EXPECT_EQ(summary.adjustment->solver.termination, "CONVERGENCE");
  const auto& fit = *summary.adjustment;
  EXPECT_GT(fit.before.pairs.rms, 0.1);
  EXPECT_LT(fit.after.pairs.rms, 0.03);
  EXPECT_EQ(summary.rounds.size(), 2U);
  EXPECT_EQ(skipped(), 0U);
  // "Before" is the delivered state in every round.
  const auto before = [&](std::size_t round) {
    return summary.rounds[round].adjustment->before.pairs.rms;
  };
  EXPECT_NEAR(before(1), before(0), 0.05 * before(0));
  EXPECT_THAT(summary.datum->warnings, ElementsAre(HasSubstr("limit of 2")));
  const auto text = contentOf(folder / "out" / "summary.txt");
  EXPECT_EQ(text, textOf(summary));
  EXPECT_THAT(text, AllOf(HasSubstr("strip pairs"), HasSubstr("candidates"), HasSubstr("datum: ")));
  EXPECT_EQ(textOf(RunFolder(folder / "out").readSummary()), text);

  const auto adjusted = fs::last_write_time(folder / "out/05_adjusted/strip_01_SA.kx");
  const auto again = done();
  EXPECT_EQ(skipped(), steps());
  EXPECT_EQ(textOf(*again.adjustment, true), textOf(*summary.adjustment, true));
  EXPECT_EQ(fs::last_write_time(folder / "out/05_adjusted/strip_01_SA.kx"), adjusted);

  fs::remove(folder / "out/05_adjusted/strip_02_SA.kx");
  done();
  EXPECT_EQ(steps() - skipped(), 1U);  // georeferenced alone
  settings.model.configuration.ThresholdMaxAngle = 4;
  done();
  EXPECT_EQ(skipped(), settings.strips.size());  // rasterized strips
  settings.force = true;
  done();
  EXPECT_EQ(skipped(), 0U);
}

TEST_F(SeveralRuns, GoesFromCoarseToFineWhereStripsLieFarApart) {
  SimulationSettings options;  // of one wrong misalignment: 10 m apart where points are 1 m
  options.points = 300'000;
  options.strips = 2;
  options.length = 500;
  options.onlyErrors = "misalignment";
  options.errorScale = 10.0;
  fs::remove_all(flight());
  make(flight(), options);
  settings.model.held = {"offsets", "scales", "lever-arm"};
  settings.model.locked = {0, 1, 2, 3};  // or the strips' rolls and pitches take what they like
  settings.rounds = 3;
  const auto farthest = [](const RunReport& summary) {  // from the truth [degree]
    const auto& angles = summary.adjustment->globals.misalignment;
    const std::array<double, 3> truth{0.71, -0.67, 1.44};
    double most = 0.0;
    for (std::size_t k = 0; k < 3; ++k) {
      most = std::max(most, std::abs(angles[k] - truth[k]));
    }
    return most;
  };
  settings.coarseRounds = 9;  // of which the first see no planes
  const auto summary = done();
  EXPECT_LT(farthest(summary), 0.02);
  EXPECT_LT(summary.adjustment->after.pairs.rms, 0.02);
  EXPECT_FALSE(summary.rounds[0].adjustment.has_value());
  EXPECT_THAT(textOf(summary), HasSubstr("round 1, coarse: search radius"));
  const auto again = done();
  EXPECT_EQ(skipped(), steps());
  EXPECT_EQ(textOf(*again.adjustment, true), textOf(*summary.adjustment, true));
}

TEST_F(SeveralRuns, HoldsItsResultAgainstOthersFromStartsBesideIt) {
  settings.match.maxCorrespondences = 4000;
  settings.model.configuration.TypeModel = "BIAS";
  settings.stability = true;
  const auto before = done();
  ASSERT_TRUE(before.stability);
  EXPECT_EQ(before.stability->starts, 4U);
  EXPECT_GT(before.stability->length, before.adjustment->after.pairs.rms);
  for (const auto& sum : before.stability->sums) EXPECT_LT(sum.high - sum.low, 1.0) << sum.name;
  EXPECT_LT(before.stability->points, 0.2);
  EXPECT_FALSE(fs::exists(folder / "out/01_status/stability"));
  EXPECT_THAT(textOf(before), HasSubstr("others from"));
  lines.clear();
  const auto again = done();
  EXPECT_EQ(skipped(), steps()) << "nor is the stability looked at again";
  EXPECT_EQ(again.stability->points, before.stability->points);
}

TEST_F(SeveralRuns, MatchesAsUsualWhereNoCoarseRoundComesFirst) {
  settings.steps = {"+rasterize", "+correspondences"};
  const auto usual = done().rounds[0].matching->correspondences;
  settings.coarseRounds = 2;
  EXPECT_EQ(done().rounds[0].matching->correspondences, usual);
}

TEST_F(SeveralRuns, SaysWhatNothingControls) {
  settings.model.configuration.CellSizeWeights[0] = 1;
  settings.rounds = 1;
  EXPECT_THAT(textOf(done()), HasSubstr("WARNING: LINEAR sections with weight 1"));
  settings.groundTruth.clear();
  settings.model.isRelative = true;
  const auto summary = done();
  EXPECT_THAT(textOf(summary), HasSubstr("WARNING: No ground truth"));
  EXPECT_LT(summary.adjustment->after.pairs.rms, 0.03);
}

TEST_F(SeveralRuns, NamesAWrongPatchOfControlAndGivesItLittleWeight) {
  const GroundTruth known(readGroundTruth(settings.groundTruth, settings.configuration()));
  ASSERT_GT(known.patches(), 10U);
  constexpr std::uint32_t wrong = 2;
  auto places = known.points().places;
  for (std::size_t k = 0; k < places.size(); ++k) {
    if (known.patchOf(k) == wrong) places[k].z += 0.1;
  }
  GridEditor(settings.groundTruth).set("Positions", places).save();
  settings.rounds = 4;
  settings.match.maxCorrespondences = 4000;
  const auto summary = done();
  const auto& last = summary.rounds.back();
  ASSERT_EQ(last.matching->control.size(), known.patches());
  const auto& item = last.matching->control[wrong];
  EXPECT_GT(item.correspondences, 0U);
  EXPECT_LT(item.weight, 0.5);
  EXPECT_THAT(summary.datum->warnings, testing::Contains(HasSubstr(": 2 (E ")));
  for (const auto& fit : last.adjustment->control) {
    if (fit.id == wrong) {
      EXPECT_NEAR(std::abs(fit.after), 0.1, 0.03);
    } else {
      EXPECT_LT(std::abs(fit.after), 0.03) << fit.id;
    }
  }
  EXPECT_THAT(textOf(summary), HasSubstr("after [cm]"));
  EXPECT_EQ(textOf(RunFolder(folder / "out").readSummary()), textOf(summary));
  const auto again = done();  // from the records
  EXPECT_EQ(skipped(), steps());
  EXPECT_EQ(again.datum->warnings, summary.datum->warnings);
}

TEST_F(SmallRun, GoesOnWithAStripThatHasNoPlanarSurface) {
  change<std::uint8_t>(0, "Classification",
                       [](auto& classes) { classes.assign(classes.size(), 5); });
  const auto summary = done();
  EXPECT_EQ(summary.rasterizing->strips[0].counts.notTerrain,
            summary.rasterizing->strips[0].counts.points -
                summary.rasterizing->strips[0].counts.notPlanar);
  EXPECT_THAT(textOf(summary), HasSubstr("of strip_01.kx with 0 correspondences"));
}

TEST_F(SmallRun, RefusesFilesThatDoNotBelongTogether) {
  change<double>(0, "GPSTime", [](auto& times) {
    for (double& time : times) time += 4000.0;
  });
  EXPECT_THAT(refusal(), AllOf(HasSubstr("strip_01.kx: measured from"),
                               HasSubstr("but the trajectory is from")));
  change<double>(0, "GPSTime", [](auto& times) {
    for (double& time : times) time -= 4000.0;
    times[7] = std::numeric_limits<double>::quiet_NaN();
  });
  EXPECT_THAT(refusal(), HasSubstr("strip_01.kx: a GPS time is no number"));
  saveStrip(settings.strips[0], {});
  EXPECT_THAT(refusal(), HasSubstr("strip_01.kx: holds no points"));
  StripColumns other;
  other.week = 2000;
  other.world = {{1, 2, 3}, {4, 5, 6}};
  other.times = {302410, 302411};
  saveStrip(settings.strips[0], other);
  EXPECT_THAT(refusal(), HasSubstr("strip_01.kx: StandardCartesianChart3D/Amplitude: missing"));
  other.returnNumber = other.numberOfReturns = other.classification = {1, 1};
  other.amplitude = {20, 20};
  other.scanner = {{500, 0, 0}, {500, 0, 1}};
  saveStrip(settings.strips[0], other);
  EXPECT_THAT(refusal(),
              HasSubstr("strip_01.kx: ScannerCoordinateSystem/Waveforms.DirectionDelta: missing"));
  other.directions = {{0, 0, 1}, {0, 0, 1}};
  other.scanner[1].y = std::nan("");
  saveStrip(settings.strips[0], other);
  EXPECT_THAT(refusal(), HasSubstr("strip_01.kx: a scanner coordinate is no number"));
  other.scanner[1].y = 0;
  saveStrip(settings.strips[0], other);
  EXPECT_THAT(refusal(), HasSubstr("of week 2000, but the trajectory has only the GPS weeks 2318"));
  writeContent(settings.strips[0], "no container");
  EXPECT_THAT(refusal(), HasSubstr("strip_01.kx"));
  settings.configuration().SelectionStr = "Amplitude > ";
  EXPECT_THAT(refusal(Error::BadSettings), HasSubstr("Amplitude > "));
}

TEST_F(SmallRun, IsRefusedBeforeItStartsWhereTheSolverHasNoRoom) {
  settings.match.maxCorrespondences = 1'000'000'000'000;
  EXPECT_THAT(refusal(Error::BadSettings),
              AllOf(HasSubstr("max-correspondences 1000000000000: the solver takes some 400000.00"),
                    HasSubstr("GB are free; max-correspondences "), HasSubstr(" fits")));
  EXPECT_FALSE(RunState::isIn(folder / "out"));
}

TEST_F(SmallRun, RefusesAStepWithoutTheOneBefore) {
  settings.steps = {"+correspondences"};
  EXPECT_THAT(refusal(Error::MissingFile),
              HasSubstr("strip_01.kx: no such raster; rasterize first"));
  settings.steps = {"+optimization"};
  EXPECT_THAT(refusal(), HasSubstr("03_correspondences: holds no blocks of correspondences"));
}

TEST_F(SmallRun, RefusesGroundTruthElsewhereAndStripsApart) {
  const auto truth = settings.groundTruth;
  settings.groundTruth = (folder / "far.kx").string();
  saveGroundTruth(settings.groundTruth, {{{1e5, 2e6, 100}}, {{0, 0, 1}}, {2}});
  EXPECT_THAT(refusal(), AllOf(HasSubstr("far.kx: lies at E 100000"), HasSubstr("another zone")));
  settings.groundTruth = truth;
  for (std::size_t strip = 0; strip < settings.strips.size(); ++strip) {
    change<point>(strip, "Positions", [&](auto& places) {
      for (point& place : places) place.x += 5000.0 * static_cast<double>(strip);
    });
  }
  EXPECT_THAT(refusal(), HasSubstr("overlap"));
  const auto summary = RunFolder(folder / "out").readSummary();
  EXPECT_GT(summary.rasterizing->strips[0].counts.points, 1000U);
  EXPECT_THAT(contentOf(folder / "out/summary.txt"), HasSubstr("FAILED: no two of"));
}

TEST_F(SeveralRuns, LeavesOutPointsThatAreNoNumbers) {
  change<point>(1, "Positions", [](auto& places) {
    for (std::size_t i = 0; i < places.size(); i += 10) places[i].z = std::nan("");
  });
  const auto summary = done();
  EXPECT_GT(summary.rasterizing->strips[1].counts.notFinite, 1000U);
  EXPECT_LT(summary.adjustment->after.pairs.rms, 0.03);
}

TEST(IdleScale, IsToldWhereNoSensorHasOneSoLargeAndItMovesNothing) {
  EXPECT_EQ(
      idleScaleText(-3.5, 0.0006),
      "The scanner looks at most 0.0006 m forward: its forward angle's scale moves no point by "
      "more than 0.0021 m.\n");
  EXPECT_NE(idleScaleText(-3.5, 0.0), "");
  EXPECT_EQ(idleScaleText(3.5, 0.5), "") << "metres";
  EXPECT_EQ(idleScaleText(0.001, 0.0005), "") << "that of a sensor";
  EXPECT_EQ(idleScaleText(std::nan(""), 0.0005), "");
}

TEST_F(SeveralRuns, TakesFileNamesThatAreNoUtf8) {
  const std::string renamed = (flight() / "streifen_\xE4.kx").string();
  fs::rename(settings.strips.back(), renamed);
  settings.strips.back() = renamed;
  const auto summary = done();
  EXPECT_EQ(summary.rounds.size(), 2U);
  EXPECT_TRUE(fs::exists(folder / "out/05_adjusted/streifen_\xE4_SA.kx"));
}

TEST_F(SmallRun, ThatIsCancelledCannotBeUsedAndGoesOn) {
  const auto root = folder / "out";
  settings.rounds = 1;
  std::size_t asked = 0, last = 60;
  watch.isCancelled = [&] { return ++asked > last; };
  EXPECT_THAT(refusal(Error::Interrupted), HasSubstr("cancelled while"));
  EXPECT_EQ(RunState::in(root).phase, RunState::Phase::interrupted);
  EXPECT_THROW(FinishedRun{root}, Error);
  watch.isCancelled = {};
  done();
  EXPECT_GT(skipped(), 0U) << "what was done before counts";
  EXPECT_EQ(FinishedRun(root).adjustedStrips().size(), settings.strips.size());
  EXPECT_EQ(FinishedRun(root).strips().size(), settings.strips.size());
  settings.steps = {"+rasterize"};
  done();
  EXPECT_FALSE(FinishedRun(root).modelIfAny());
  EXPECT_THROW(FinishedRun(root).adjustedStrips(), Error);
  EXPECT_THROW(FinishedRun(root).model(), Error);
}

TEST_F(SeveralRuns, DoesItsStepsOneByOneToo) {
  Flight flight(settings, watch);
  EXPECT_EQ(flight.strips().size(), settings.strips.size());
  EXPECT_THROW(flight.georeference(), Error);
  EXPECT_GT(flight.rasterize().strips[0].counts.points, 1000U);
  EXPECT_GT(flight.match().correspondences, 500U);
  EXPECT_TRUE(flight.adjust().solver.isConvergence());
  EXPECT_EQ(flight.georeference().strips, settings.strips.size());
  EXPECT_EQ(FinishedRun(folder / "out").adjustedStrips().size(), settings.strips.size());
}

TEST_F(SeveralRuns, EndsWithTheStatusOfItsKind) {
  settings.rounds = 1;
  settings.model.configuration.NumberOfIterations = 1;
  EXPECT_THAT(refusal(Error::NoConvergence), HasSubstr("raise iterations"));
  EXPECT_THAT(contentOf(folder / "out/summary.txt"), HasSubstr("NO_CONVERGENCE"));
  EXPECT_FALSE(fs::exists(folder / "out/05_adjusted"));
  EXPECT_EQ(RunState::in(folder / "out").phase, RunState::Phase::failed);
  settings.model.configuration.NumberOfIterations = 30;
  saveGroundTruth(settings.groundTruth, {});
  EXPECT_THAT(refusal(Error::TooLittleControl), HasSubstr("100 are needed"));
  settings.configuration().RootPath = "/proc/nowhere";
  EXPECT_THAT(refusal(Error::NoSpace), HasSubstr("/proc/nowhere"));
}

}  // namespace
