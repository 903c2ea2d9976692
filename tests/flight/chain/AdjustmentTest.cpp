// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <set>

#include <gmock/gmock.h>
#include <omp.h>

#include "flight/records/FinishedRun.h"
#include "flight/strips/OrFail.h"
#include "platform/morvane/Console.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include "tests/support/Refusal.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/flight/Adjust.h>
#include <velorn/flight/Containers.h>

using namespace Velorn::Flights;

using testing::HasSubstr, testing::IsSupersetOf, testing::Not;
namespace fs = std::filesystem;

namespace {

/// Two strips over a short trajectory, with files as far as a run gets before it solves.
class Adjusting : public testing::Test {
 protected:
  Adjusting() {
    for (const char* name : {"a.kx", "b.kx"}) {
      StripColumns strip;
      strip.times = {1001, 1009};
      strip.world = strip.scanner = {{}, {}};
      saveStrip(folder / name, strip);
      input.strips.push_back(folder / name);
    }
    writeContent(folder / "ground.kx", "");
    input.groundTruth = folder / "ground.kx";
    input.trajectories = {TrajectoryFile({recordsAt({1000, 1005, 1010})}).save(folder / "t.kx")};
    input.correspondences = folder / "blocks";
    input.configuration.RootPath = folder / "out";
    fs::create_directory(input.correspondences);
  }

  void writePairs(double time, unsigned week = 2318) const {
    Velorn::CorrespondenceBlock block(input.correspondences / "c0_1.kx", false, week, week,
                                      input.configuration.Storage);
    const Velorn::SphericalBeing being({1, 2, 3}, {600, 1, 2}, time, {0, 0, 1}, {0, 0, 1}, 11);
    for (int i = 0; i < 3; ++i) block.add(being, being);
    orFail(block.save());
  }

  std::string failure(Error::Kind kind = Error::BadInput) const {
    return refusalOf([this] { adjust(input, {}); }, kind);
  }

  TemporaryFolder folder;
  AdjustmentInput input;
  Morvane::ConsoleRedirection silence{[](std::string_view) {}};
};

}  // namespace

TEST_F(Adjusting, RefusesFilesThatAreMissingOrCannotBeToldApart) {
  const auto good = input;
  input.strips.push_back(folder / "no.kx");
  EXPECT_EQ(failure(), (folder / "no.kx").string() + ": no such file");
  input = good;
  fs::create_directory(folder / "other");
  fs::copy(folder / "a.kx", folder / "other");
  input.strips.push_back(folder / "other" / "a.kx");
  EXPECT_THAT(failure(), HasSubstr("two strips of one name"));
  input = good;
  input.groundTruth = folder.path();
  EXPECT_EQ(failure(), folder.path().string() + ": is not a file");
  input = good;
  fs::copy(folder / "t.kx", folder / "t,2.kx");
  input.trajectories = {folder / "t,2.kx"};
  EXPECT_THAT(failure(), HasSubstr("must not hold a comma"));
  input = good;
  input.correspondences = folder / "nowhere";
  EXPECT_THAT(failure(), HasSubstr("nowhere: no such folder"));
  input = good;
  writeContent(input.correspondences / "unfinished", "");
  EXPECT_THAT(failure(), HasSubstr("blocks: the matching that writes it was not finished"));
  fs::remove(input.correspondences / "unfinished");
  EXPECT_FALSE(fs::exists(folder / "out"));
}

TEST_F(Adjusting, NamesBlocksWithTimesThatTheTrajectoryDoesNotCover) {
  for (const auto& [time, week] : {std::pair{1000.0, 2318U}, {999.0, 2318U}, {1005.0, 2317U}}) {
    writePairs(time, week);
    const auto why = HasSubstr("c0_1.kx: 6 points were measured before the trajectory");
    EXPECT_THAT(failure(), why);
    EXPECT_THAT(RunState::in(folder / "out").message, why);
  }
  EXPECT_FALSE(fs::exists(folder / "out/00_parameter"));
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
  EXPECT_THAT(failure(Error::NoSpace), HasSubstr("out: cannot be made a folder"));
}

TEST_F(Adjusting, CancelledAtAnyTimeLeavesAnInterruptedRunInsteadOfAnEarlierResult) {
  writePairs(1005);
  input.settings.fewestGroundTruth = 0;
  EXPECT_THAT(failure(), HasSubstr("blocks: only 3 correspondences for 12 estimated unknowns"));
  input.mayBeScarce = true;
  EXPECT_EQ(adjust(input, {}).heldSections.size(), 2U);
  const fs::path root = folder / "out";
  EXPECT_TRUE(fs::exists(FinishedRun(root).model().parameters));
  std::set<std::string> ends;
  for (int questions = 0; questions < 100; ++questions) {
    Watch watch;
    watch.isCancelled = [left = questions]() mutable { return --left < 0; };
    const auto end = refusalOf([&] { adjust(input, watch); }, Error::Interrupted);
    if (end == "not refused") break;
    ends.insert(end);
    EXPECT_EQ(RunState::in(root).phase, RunState::Phase::interrupted);
    EXPECT_THAT(refusalOf([&] { FinishedRun{root}; }), HasSubstr("was interrupted"));
  }
  EXPECT_THAT(ends, IsSupersetOf({"cancelled while setSection #",
                                  "cancelled while the solver was at work"}));
  EXPECT_EQ(RunState::in(root).phase, RunState::Phase::finished);
}

TEST(RequireConvergence, TellsHowTheSolverEndedByKindAndWords) {
  const auto failureOf = [](const char* termination, std::optional<Error::Kind> kind) {
    const Velorn::SolverEnd end{termination, "Words."};
    return refusalOf([&] { requireConvergence(end, "try more"); }, kind);
  };
  EXPECT_EQ(failureOf("CONVERGENCE", {}), "not refused");
  EXPECT_EQ(failureOf("NO_CONVERGENCE", Error::NoConvergence),
            "the solver ended with NO_CONVERGENCE: Words.; the unknowns are not to be used; try "
            "more");
  EXPECT_EQ(failureOf("FAILURE", Error::SolverFailed),
            "the solver ended with FAILURE: Words.; the unknowns are not to be used");
}

TEST(AdjustmentText, SumsUpHowTheSolverEndedAndWhatWasHeld) {
  AdjustmentReport report;
  report.solver.termination = "FAILURE";
  report.heldSections = {{"b.kx", 1, 7, true, false}, {"b.kx", 2, 9, false, true}};
  const auto text = textOf(report, false);
  EXPECT_THAT(text, HasSubstr("solver: FAILURE after 0 steps"));
  EXPECT_THAT(text, HasSubstr("section 1 of b.kx (7 correspondences): too few"));
  EXPECT_THAT(text, HasSubstr("section 2 of b.kx (9 correspondences): locked\n"));
  EXPECT_THAT(text, HasSubstr("not controlled"));
  EXPECT_THAT(text, Not(HasSubstr("WARNING")));
  report.solver.residuals = 400;
  report.solver.estimated = 21;
  EXPECT_THAT(textOf(report, false), HasSubstr("WARNING: Only 400 correspondences for 21"));
}
