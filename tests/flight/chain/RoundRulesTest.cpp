// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <deque>

#include <gmock/gmock.h>

#include "flight/chain/RoundRules.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;
using testing::DoubleNear;
using testing::ElementsAre;

namespace {

/// Steps of a flight that is not there: each adjustment gives the next RMS of a list.
class Told final : public RoundSteps {
 public:
  std::optional<RoundReport> finished(const Round& round) override {
    return round.number <= kept.size() ? std::optional(kept[round.number - 1]) : std::nullopt;
  }
  MatchReport match(const Round& round) override {
    radii.push_back(round.radius);
    scales.push_back(round.scale);
    starts.push_back(round.start ? round.start->digest : "");
    MatchReport report;
    report.searchRadius = round.radius;
    report.correspondences = found.empty() ? 1000 : found.front();
    if (!found.empty()) found.pop_front();
    report.typicalDistance = 0.2;
    return report;
  }
  AdjustmentReport adjust(const Round& round) override {
    adjusted.push_back(round.number);
    if (rms.empty()) throw Error("no more");
    AdjustmentReport report;
    report.solver.termination = rms.front() > 0.0 ? "CONVERGENCE" : "NO_CONVERGENCE";
    report.after.pairs.rms = rms.front();
    rms.pop_front();
    return report;
  }
  void keep(const Round& /*round*/, const RoundReport& report) override {
    remembered.push_back(report);
  }
  std::string digestOf(const Round& round) override { return std::to_string(round.number); }
  void tell(const std::string& /*line*/) override {}

  std::deque<double> rms;         // of the pairs, round by round; 0: no convergence
  std::deque<std::size_t> found;  // correspondences; afterwards 1000
  std::vector<RoundReport> kept, remembered;
  std::vector<double> radii, scales;
  std::vector<std::string> starts;
  std::vector<unsigned> adjusted;
};

RoundsResult run(Told& steps, const RoundPlan& plan) {
  RoundsResult result;
  runRounds(plan, steps, result);
  return result;
}

TEST(Rounds, EndWhenTheFitChangesByLessThanOnePerCent) {
  Told steps;
  steps.rms = {0.1, 0.05, 0.0496, 0.01};
  const auto result = run(steps, {});
  EXPECT_EQ(result.reports.size(), 3U);
  EXPECT_EQ(result.model->digest, "3");
  EXPECT_THAT(steps.starts, ElementsAre("", "1", "2"));
  Told slow;
  slow.rms = {0.1, 0.09, 0.08, 0.07, 0.06, 0.05};
  EXPECT_EQ(run(slow, {}).reports.size(), 5U) << "at most";
}

TEST(Rounds, SearchAsFarAsTheLastFitLeavesAndNeverFurtherThanTold) {
  Told steps;
  steps.rms = {0.5, 0.1, 0.0999};
  run(steps, {});
  EXPECT_THAT(steps.radii, ElementsAre(3.0, DoubleNear(3 * 0.2 + 4 * 0.5, 1e-12),
                                       DoubleNear(3 * 0.2 + 4 * 0.1, 1e-12)));
  Told far;
  far.rms = {5.0, 4.0, 3.999};
  run(far, {});
  EXPECT_THAT(far.radii, ElementsAre(3.0, 3.0, 3.0));
}

TEST(Rounds, EndWithoutAModelWhereASolverDoesNotConverge) {
  Told steps;
  steps.rms = {0.1, 0.0, 0.1};
  const auto result = run(steps, {});
  EXPECT_EQ(result.reports.size(), 2U);
  EXPECT_FALSE(result.model) << "that of the round before is not taken";
  EXPECT_EQ(steps.remembered.size(), 1U);
  Told coarse;
  coarse.rms = {0.0, 0.1};
  EXPECT_EQ(run(coarse, {true, true, 2, 5, 3.0}).reports.size(), 1U);
}

TEST(Rounds, GoFromCoarseToFineAndPassOverWhatIsTooCoarse) {
  Told steps;
  steps.found = {9, 10};
  steps.rms = {0.3, 0.1, 0.0999};
  const auto result = run(steps, {true, true, 2, 5, 3.0});
  EXPECT_THAT(steps.scales, ElementsAre(2.0, DoubleNear(std::sqrt(2.0), 1e-12), 1.0, 1.0));
  EXPECT_THAT(steps.adjusted, ElementsAre(2, 3, 4));
  EXPECT_FALSE(result.reports[0].adjustment);
  EXPECT_EQ(steps.remembered.size(), 4U) << "also that it was too coarse";
  EXPECT_EQ(steps.radii[1], 3.0) << "nothing was learnt";
  Told settled;  // a coarse round that fits alike settles nothing
  settled.rms = {0.1, 0.1, 0.1};
  EXPECT_EQ(run(settled, {true, true, 1, 5, 3.0}).reports.size(), 3U);
}

TEST(Rounds, TakeWhatAnEarlierRunHasAndMatchOnlyTheLastAgain) {
  Told first;
  first.rms = {0.1, 0.05, 0.0499};
  run(first, {});
  Told second;
  second.kept = first.remembered;
  const auto result = run(second, {});
  EXPECT_TRUE(result.reports[0].isSkipped && result.reports[2].isSkipped);
  EXPECT_EQ(result.model->digest, "3");
  EXPECT_THAT(second.starts, ElementsAre("2")) << "the blocks are to be those of the model";
  EXPECT_TRUE(second.adjusted.empty());
  Told third;
  third.kept = {first.remembered[0]};
  third.rms = {0.05, 0.0499};
  EXPECT_EQ(run(third, {}).reports.size(), 3U);
  EXPECT_THAT(third.adjusted, ElementsAre(2, 3));
}

TEST(Rounds, AreOneWhereOnlyMatchingOrOnlyAdjustingIsWanted) {
  Told matching;
  const auto matched = run(matching, {true, false, 3, 5, 3.0});
  EXPECT_EQ(matched.reports.size(), 1U);
  EXPECT_FALSE(matched.model);
  EXPECT_THAT(matching.scales, ElementsAre(1.0)) << "coarse rounds are those of a whole run";
  Told adjusting;
  adjusting.rms = {0.1, 0.05};
  EXPECT_EQ(run(adjusting, {false, true, 3, 5, 3.0}).model->digest, "1");
  EXPECT_TRUE(adjusting.radii.empty());
}

TEST(Rounds, LeaveWhatTheyFoundWhereAStepThrows) {
  Told steps;
  steps.rms = {0.1};
  RoundsResult result;
  EXPECT_THROW(runRounds({}, steps, result), Error);
  EXPECT_EQ(result.reports.size(), 1U);
}

}  // namespace
