// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <omp.h>

#include "flight/chain/Adjustment.h"
#include "flight/report/AdjustmentText.h"
#include "platform/morvane/Console.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

/// Two strips over a short trajectory, with files as far as a run gets before it solves.
class Adjusting : public testing::Test {
 protected:
  Adjusting() {
    for (const char* name : {"a.kx", "b.kx"}) {
      Strandel::Bundle bundle;
      const auto chart =
          bundle.makeSlice(0)->makeGrid("strip")->makeChart(Strandel::scannerChartName);
      chart->makeField("GPSTime", Strandel::ValueType::Double)
          ->setValues<double>({0}, std::vector<double>{1001, 1009});
      orFail(Strandel::MyStorage(0, 0, 1, 1).save(bundle, folder / name, "wd"));
      job.strips.push_back(folder / name);
    }
    writeContent(folder / "ground.kx", "");
    job.groundTruth = folder / "ground.kx";
    job.trajectories = {TrajectoryFile({recordsAt({1000, 1005, 1010})}).save(folder / "t.kx")};
    job.correspondences = folder / "blocks";
    job.configuration.RootPath = folder / "out";
    fs::create_directory(job.correspondences);
  }

  void writePairs(double time, unsigned week = 2318) const {
    Velorn::CorrespondenceBlock block(job.correspondences / "c0_1.kx", false, week, week,
                                      job.configuration.Storage);
    const Velorn::SphericalBeing being({1, 2, 3}, {600, 1, 2}, time, {0, 0, 1}, {0, 0, 1}, 11);
    for (int i = 0; i < 3; ++i) block.add(being, being);
    orFail(block.save());
  }

  std::string failure(int status = Error::BadInput) const {
    try {
      checkJob(job);
      adjust(job, nullptr);
    } catch (const Error& fault) {
      EXPECT_EQ(fault.kind(), status) << fault.what();
      return fault.what();
    }
    return "no failure";
  }

  TemporaryFolder folder;
  AdjustmentJob job;
  Morvane::ConsoleRedirection silence{[](std::string_view) {}};
};

}  // namespace

TEST_F(Adjusting, RefusesFilesThatAreMissingOrCannotBeToldApart) {
  const auto good = job;
  job.strips.push_back(folder / "no.kx");
  EXPECT_EQ(failure(), (folder / "no.kx").string() + ": no such file");
  job = good;
  fs::create_directory(folder / "other");
  fs::copy(folder / "a.kx", folder / "other");
  job.strips.push_back(folder / "other" / "a.kx");
  EXPECT_THAT(failure(), HasSubstr("two strips of one name"));
  job = good;
  job.groundTruth = folder.path();
  EXPECT_EQ(failure(), folder.path().string() + ": is not a file");
  job = good;
  fs::copy(folder / "t.kx", folder / "t,2.kx");
  job.trajectories = {folder / "t,2.kx"};
  EXPECT_THAT(failure(), HasSubstr("must not hold a comma"));
  job = good;
  job.correspondences = folder / "nowhere";
  EXPECT_THAT(failure(), HasSubstr("nowhere: no such folder"));
  job = good;
  writeContent(job.correspondences / "unfinished", "");
  EXPECT_THAT(failure(), HasSubstr("blocks: the matching that writes it was not finished"));
  fs::remove(job.correspondences / "unfinished");
  EXPECT_FALSE(fs::exists(folder / "out"));
}

TEST_F(Adjusting, NamesBlocksWithTimesThatTheTrajectoryDoesNotCover) {
  for (const auto& [time, week] : {std::pair{1000.0, 2318U}, {999.0, 2318U}, {1005.0, 2317U}}) {
    writePairs(time, week);
    EXPECT_THAT(failure(), HasSubstr("c0_1.kx: 6 points were measured before the trajectory"));
  }
  EXPECT_FALSE(fs::exists(folder / "out"));
}

TEST_F(Adjusting, SaysHowMuchGroundTruthThereIsWhenItIsTooLittle) {
  writePairs(1005);
  const int threads = omp_get_max_threads();
  EXPECT_THAT(failure(Error::TooLittleControl),
              HasSubstr("only 0 correspondences with the ground truth, 100 are needed"));
  EXPECT_EQ(omp_get_max_threads(), threads);
  EXPECT_TRUE(fs::exists(folder / "out/01_status/03_HistCorrespondences.txt"));
}

TEST_F(Adjusting, RefusesARootInWhichNoFolderCanBeMade) {
  writePairs(1005);
  writeContent(folder / "out", "a file");
  EXPECT_THAT(failure(Error::NoSpace), HasSubstr("out/00_parameter: cannot be made a folder"));
}

TEST(RequireConvergence, TellsHowTheSolverEndedByStatusAndWords) {
  const auto failureOf = [](const char* termination) {
    try {
      requireConvergence({termination, "Words.", 0, 0, 0, 0, 0, 0, 0}, "try more");
    } catch (const Error& failure) {
      return std::pair(failure.kind(), std::string(failure.what()));
    }
    return std::pair(0, std::string());
  };
  EXPECT_EQ(failureOf("CONVERGENCE").first, 0);
  EXPECT_EQ(
      failureOf("NO_CONVERGENCE"),
      std::pair(Error::NoConvergence, std::string("the solver ended with NO_CONVERGENCE: Words.; "
                                                  "the unknowns are not to be used; try more")));
  EXPECT_EQ(failureOf("FAILURE"),
            std::pair(Error::SolverFailed, std::string("the solver ended with FAILURE: Words.; the "
                                                       "unknowns are not to be used")));
}

TEST_F(Adjusting, SumsUpHowTheSolverEndedAndWhatWasHeld) {
  AdjustmentOutcome outcome{{"a.kx", "b.kx"}, {}, {}, {}};
  outcome.result.end.termination = "FAILURE";
  outcome.result.sections = {
      {0, 0, 500, false, false}, {1, 1, 7, true, false}, {1, 2, 9, true, true}};
  const auto text = summaryOf(outcome, false);
  EXPECT_THAT(text, HasSubstr("solver: FAILURE after 0 steps"));
  EXPECT_THAT(text, HasSubstr("section 1 of b.kx (7 correspondences): too few"));
  EXPECT_THAT(text, HasSubstr("section 2 of b.kx (9 correspondences): locked, and weak"));
  EXPECT_THAT(text, testing::Not(HasSubstr("a.kx")));
  EXPECT_THAT(text, HasSubstr("not controlled"));
}
