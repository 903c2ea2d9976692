// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <regex>
#include <sstream>

#include <omp.h>

#include "tests/adjustment/optimization/Correspondences.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"

using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

/// Strip 0 in two sections that overlap, one of them controlled; a root without a parameter folder.
class AdjustmentRun : public Correspondences {
 protected:
  AdjustmentRun() {
    omp_set_num_threads(2);
    std::vector<Record> records;
    records.reserve(20);
    for (int i = 0; i < 20; ++i) records.push_back({990.0 + i, {6e5 + 60 * i, 5.25e6, 1e3}, {}});
    trajectory = Velorn::Trajectory({TrajectoryFile({records}).save(folder / "t.kx")});
    EXPECT_EQ(trajectory.importTrajectory(), "");
    divideStrip();
    auto later = being();
    later.gpsTime = 1004.0;
    write("c0_0.kx", 150, false, being(), later);
    writeControl("c0_3_GroundTruth.kx", 120);
  }

  void divideStrip() {
    std::string sections, unknowns =
                              "#Number of local parameters: 96\n"
                              "#Number of global parameters: 12 (see last line)\n\n";
    const unsigned strip[] = {0, 0, 1, 2};
    for (unsigned i = 0; i < 4; ++i) {
      sections += "StripID: " + std::to_string(strip[i]) + ", sectionID: " + std::to_string(i) +
                  ", t: " + (i == 1 ? "1002" : "0") + ".000000000000000, type: BIAS\n";
      for (int k = 0; k < 24; ++k) unknowns += "0.000000000000000 ";
      unknowns += "\n";
    }
    for (int k = 0; k < 12; ++k) unknowns += "0.000000000000000 ";
    writeContent(folder / "sections", sections);
    writeContent(folder / "unknowns", unknowns);
    files.writeStripID(folder / "ids", false);
    EXPECT_EQ(parameters.restore(folder / "sections", folder / "unknowns", folder / "ids"), "");
  }

  std::string run() {
    console.clear();
    return optimization.run();
  }
  const Velorn::SolverEnd& end() const { return optimization.result().end; }
  fs::path parameterFile() const {
    return folder / "00_parameter" / ("Parameter" + configuration.FileSuffix);
  }
};

}  // namespace

TEST_F(AdjustmentRun, TakesPairsOfOneStripAndThoseWithoutANormalAndSavesItsResult) {
  auto flat = being();
  flat.normal = {};
  write("c0_1.kx", 7, false, flat, being());
  EXPECT_EQ(run(), "");
  EXPECT_FALSE(optimization.failed());
  EXPECT_TRUE(end().isConvergence()) << end().message;
  EXPECT_LT(end().finalCost, 1e-6 * end().initialCost);
  EXPECT_EQ(end().residuals, 277);
  EXPECT_EQ(optimization.result().withoutNormal, 7U);
  EXPECT_EQ(optimization.result().after.pairs.moments.count, 150U);
  EXPECT_THAT(console, Contains(HasSubstr("7 correspondences have a zero normal")));
  EXPECT_TRUE(fs::exists(parameterFile()));
}

TEST_F(AdjustmentRun, ReportsTrueNumbersAndTheSameResultHoweverItEvaluates) {
  auto flat = being();
  flat.normal = {};
  write("c0_1.kx", 7, false, flat, being());
  omp_set_num_threads(3);
  /// Of the report what is neither a time nor written with more digits than rounding leaves.
  const auto report = [&] {
    std::string kept;
    std::istringstream lines(status("03_SolverStatus.txt"));
    for (std::string line; std::getline(lines, line);) {
      if (std::regex_search(line, std::regex("[Bb]locks|Residuals|Parameters|steps|Threads"))) {
        kept += line + "\n";
      }
    }
    return kept;
  };
  const auto filled =
      Contains(HasSubstr("correspondence files: 3. GroundTruthCorrespondences: 120"));
  EXPECT_EQ(run(), "");
  EXPECT_THAT(console, filled);
  const auto expectedReport = report();
  const auto expected = end();
  EXPECT_THAT(expectedReport, HasSubstr(" 277 "));
  const double offset = parameters.getRangeAngleOffset(0);
  divideStrip();
  optimization.settings.evaluation = Velorn::Evaluation::Condensed;
  EXPECT_EQ(run(), "");
  EXPECT_THAT(console, filled);
  EXPECT_EQ(report(), expectedReport);
  EXPECT_EQ(end().residuals, expected.residuals);
  EXPECT_EQ(end().parameters, expected.parameters);
  EXPECT_EQ(end().estimated, expected.estimated);
  EXPECT_EQ(end().successfulSteps, expected.successfulSteps);
  EXPECT_NEAR(end().initialCost, expected.initialCost, 1e-9 * expected.initialCost);
  EXPECT_NEAR(parameters.getRangeAngleOffset(0), offset, 1e-8);
}

TEST_F(AdjustmentRun, EndsWithoutAResultWhenItIsCancelledBeforeTheSolverOrAfterAStep) {
  for (const int last : {1, 3}) {
    int asked = 0;
    optimization.settings.isCancelled = [&] { return ++asked == last; };
    EXPECT_EQ(run(), "CeresOptimization::run: cancelled");
    EXPECT_EQ(asked, last);
    EXPECT_TRUE(optimization.failed());
    EXPECT_TRUE(end().isCancelled());
    EXPECT_EQ(end().successfulSteps > 0, last == 3);
    EXPECT_EQ(parameters.getRangeAngleOffset(0), 0.0);
    EXPECT_FALSE(fs::exists(parameterFile()));
    EXPECT_FALSE(hasStatus("03_SolverStatus.txt"));
  }
  optimization.settings.isCancelled = [] { return false; };
  EXPECT_EQ(run(), "");
  EXPECT_NE(parameters.getRangeAngleOffset(0), 0.0);
}

TEST_F(AdjustmentRun, WarnsThatASolverWithoutAThreadMovedNothing) {
  omp_set_num_threads(1);
  for (const auto evaluation : {Velorn::Evaluation::Reference, Velorn::Evaluation::Condensed}) {
    optimization.settings.evaluation = evaluation;
    EXPECT_EQ(run(), "");
    EXPECT_EQ(end().termination, "FAILURE");
    EXPECT_THAT(console, Contains(AllOf(HasSubstr("the solver failed"), HasSubstr("num_threads"))));
  }
}

TEST_F(AdjustmentRun, RefusesKnowledgeOfStripsWhoseTimesItDoesNotKnow) {
  Velorn::APrioriKnowledge known;
  known.position = {0.1, 0.1, 0.1};
  optimization.settings.knowledge = known;
  EXPECT_THAT(run(), AllOf(HasSubstr("CeresOptimization::run: "), HasSubstr("strip 0")));
  EXPECT_TRUE(optimization.failed());
}
