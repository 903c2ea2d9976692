// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <deque>

#include <gmock/gmock.h>

#include "flight/chain/RoundRules.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

namespace {

/// Steps of a flight that is not there: each adjustment gives the next RMS of a list, and moves
/// points by ten times what the RMS has changed.
class Told final : public RoundSteps {
 public:
  ApartReport apart() override {
    ApartReport report;
    report.spacing = 0.5;
    report.pairs = {{0, 1, {farthest, 0.0, 0.0}, 100}};
    report.control = controlAbove;
    return report;
  }
  std::optional<RoundReport> finished(const Round& round) override {
    return round.number <= kept.size() ? std::optional(kept[round.number - 1]) : std::nullopt;
  }
  MatchReport match(const Round& round) override {
    radii.push_back(round.radius);
    scales.push_back(round.scale);
    controlRadii.push_back(round.controlRadius);
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
    report.moved = 10.0 * std::abs(rms.front() - last);
    report.movedByOne = creeping;
    last = rms.front();
    if (!control.empty()) {
      report.before.groundTruth = {100, 0.0, 0.4, 0.0, 0.4};
      report.after.groundTruth = {100, 0.0, 0.0, 0.0, control.front()};
      control.pop_front();
    }
    rms.pop_front();
    return report;
  }
  void keep(const Round& /*round*/, const RoundReport& report) override {
    remembered.push_back(report);
  }
  std::string digestOf(const Round& round) override { return std::to_string(round.number); }
  void tell(const std::string& /*line*/) override {}

  double farthest = 0.0, controlAbove = 0.0, creeping = 0.0, last = 1.0;
  std::deque<double> rms;         // of the pairs, round by round; 0: no convergence
  std::deque<double> control;     // NMAD, round by round; afterwards there is none
  std::deque<std::size_t> found;  // correspondences; afterwards 1000
  std::vector<RoundReport> kept, remembered;
  std::vector<double> radii, controlRadii, scales;
  std::vector<std::string> starts;
  std::vector<unsigned> adjusted;
};

RoundsResult run(Told& steps, const RoundPlan& plan) {
  RoundsResult result;
  runRounds(plan, steps, result);
  return result;
}

RoundPlan withCoarse(unsigned int coarse) {
  RoundPlan plan;
  plan.coarse = coarse;
  return plan;
}

TEST(Rounds, EndWhenPointsAndCorrectionsAreAtRest) {
  Told steps;
  steps.rms = {0.01, 0.0098, 0.00971, 0.1};
  const auto result = run(steps, {});
  EXPECT_EQ(result.reports.size(), 3U) << "0.9 mm";
  EXPECT_EQ(result.model->digest, "3");
  EXPECT_THAT(steps.starts, ElementsAre("", "1", "2"));
  EXPECT_THAT(result.end, HasSubstr("0.90 mm"));
  EXPECT_TRUE(result.warnings.empty());
  Told noisy;  // a tenth of 14 cm
  noisy.rms = {0.2, 0.199, 0.1};
  EXPECT_EQ(run(noisy, {}).reports.size(), 2U);
  Told wandering;  // 5 mm in each round, within the noise
  wandering.rms = {0.03, 0.0295, 0.03, 0.0295};
  RoundPlan plan;
  plan.noise = 0.03;
  const auto ended = run(wandering, plan);
  EXPECT_EQ(ended.reports.size(), 3U);
  EXPECT_THAT(ended.end, HasSubstr("as in the one before"));
  Told first;  // there is nothing to compare it with
  first.last = 0.01;
  first.rms = {0.01, 0.01};
  EXPECT_EQ(run(first, {}).reports.size(), 2U);
}

TEST(Rounds, SayWhenTheyEndAtTheirLimit) {
  Told steps;  // points rest, and a correction creeps along with another one
  steps.rms = {0.01, 0.01, 0.01, 0.01};
  steps.creeping = 0.02;
  RoundPlan plan;
  plan.fine = 4;
  const auto result = run(steps, plan);
  EXPECT_EQ(result.reports.size(), 4U);
  EXPECT_TRUE(result.model);
  ASSERT_EQ(result.warnings.size(), 1U);
  EXPECT_THAT(result.warnings[0], HasSubstr("limit of 4"));
}

TEST(Rounds, SearchAsFarAsTheLastFitLeavesAndNeverFurtherThanTold) {
  Told steps;
  steps.rms = {0.5, 0.1, 0.1};
  run(steps, {});
  EXPECT_THAT(steps.radii, ElementsAre(3.0, DoubleNear(3 * 0.2 + 4 * 0.5, 1e-12),
                                       DoubleNear(3 * 0.2 + 4 * 0.1, 1e-12)));
  Told far;
  far.rms = {5.0, 4.0, 4.0};
  run(far, {});
  EXPECT_THAT(far.radii, ElementsAre(3.0, 3.0, 3.0));
  Told high;
  high.controlAbove = -4.0;
  high.rms = {0.1, 0.1};
  high.control = {0.05, 0.05};
  run(high, {});
  EXPECT_THAT(high.controlRadii, ElementsAre(6.0, 3.0));
}

TEST(Rounds, AreTakenBackWhereGroundTruthFitsMuchWorse) {
  Told steps;
  steps.rms = {0.02, 0.015, 0.01};
  steps.control = {0.02, 0.06, 0.02};
  const auto result = run(steps, {});
  EXPECT_EQ(result.reports.size(), 2U);
  EXPECT_TRUE(result.reports[1].isTakenBack);
  EXPECT_EQ(result.model->digest, "1");
  EXPECT_THAT(result.warnings, ElementsAre(HasSubstr("6.0 cm after it, and to 2.0 cm before")));
  Told coarse;  // the next one begins where this one did
  coarse.rms = {0.1, 0.1, 0.01, 0.01};
  coarse.control = {0.3, 0.9, 0.02, 0.02};
  EXPECT_EQ(run(coarse, withCoarse(2)).model->digest, "4");
  EXPECT_THAT(coarse.starts, ElementsAre("", "1", "1", "3"));
}

TEST(Rounds, BeginAsCoarseAsTheStripsLieApart) {
  const auto rounds = [](double farthest, double spacing) {
    ApartReport apart;
    apart.spacing = spacing;
    apart.pairs = {{0, 1, {0.0, 0.1, 0.0}, 100}, {0, 2, {farthest, 0.0, 0.0}, 100}};
    return coarseRoundsFor(apart, 3.0);
  };
  EXPECT_EQ(rounds(4.4, 1.0), 0U) << "within reach of the search";
  EXPECT_EQ(rounds(1.6, 0.09), 5U) << "most nearest points are wrong";
  for (const double farthest : {5.0, 12.0, 30.0}) {
    const auto coarse = rounds(farthest, 0.8);
    EXPECT_GE(spacingsSearched * 0.8 * std::exp2(0.5 * coarse), farthest);
  }
  EXPECT_EQ(coarseRoundsFor({}, 3.0), 0U);
  Told steps;
  steps.farthest = 5.0;
  steps.rms = {0.1, 0.1, 0.1, 0.1};
  const auto result = run(steps, {});
  EXPECT_EQ(result.apart->coarseRounds, 3U);
  EXPECT_THAT(steps.scales, SizeIs(4U));
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
  EXPECT_EQ(run(coarse, withCoarse(2)).reports.size(), 1U);
}

TEST(Rounds, GoFromCoarseToFineAndPassOverWhatIsTooCoarse) {
  Told steps;
  steps.found = {99, 100};
  steps.rms = {0.3, 0.1, 0.1};
  const auto result = run(steps, withCoarse(2));
  EXPECT_THAT(steps.scales, ElementsAre(2.0, DoubleNear(std::sqrt(2.0), 1e-12), 1.0, 1.0));
  EXPECT_THAT(steps.adjusted, ElementsAre(2, 3, 4));
  EXPECT_FALSE(result.reports[0].adjustment);
  EXPECT_EQ(steps.remembered.size(), 4U) << "also that it was too coarse";
  EXPECT_EQ(steps.radii[1], 3.0) << "nothing was learnt";
  Told settled;  // a coarse round that moves nothing settles nothing
  settled.rms = {0.1, 0.1, 0.1};
  EXPECT_EQ(run(settled, withCoarse(2)).reports.size(), 3U);
}

TEST(Rounds, TakeWhatAnEarlierRunHasAndMatchOnlyTheLastAgain) {
  Told first;
  first.rms = {0.1, 0.05, 0.05};
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
  third.rms = {0.05, 0.05};
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
