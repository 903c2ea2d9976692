// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
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
  EXPECT_EQ(run(), "");
  EXPECT_EQ(end().termination, "FAILURE");
  EXPECT_THAT(console, Contains(AllOf(HasSubstr("the solver failed"), HasSubstr("num_threads"))));
}
