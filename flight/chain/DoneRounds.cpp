// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/DoneRounds.h"

#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

class LookedUp final : public RoundSteps {
 public:
  LookedUp(RoundWork& work, std::vector<DoneRound>& rounds) : work_(work), rounds_(rounds) {}

  ApartReport apart() override { return work_.apart(); }

  std::optional<RoundReport> finished(const Round& round) override {
    auto done = work_.finished(round);
    if (done) rounds_.push_back({round, *done});
    return done;
  }

  MatchReport match(const Round& round) override {
    if (!rounds_.empty() && rounds_.back().round.number == round.number) {
      return rounds_.back().report.matching.value_or(MatchReport());
    }
    work_.requireRound(round);
    RoundReport report;
    report.number = round.number;
    report.scale = round.scale;
    report.matching = work_.matched(round).value();
    rounds_.push_back({round, report});
    return *report.matching;
  }

  /// One that was not finished: the rounds end here.
  AdjustmentReport adjust(const Round& /*round*/) override { return {}; }

  void keep(const Round& /*round*/, const RoundReport& /*report*/) override {}
  std::string digestOf(const Round& round) override { return work_.digestOf(round); }
  void tell(const std::string& /*line*/) override {}

 private:
  RoundWork& work_;
  std::vector<DoneRound>& rounds_;
};

}  // namespace

DoneRounds doneRounds(const RunContext& run, RoundWork& work) {
  constexpr unsigned int more = 20;  // than a run may have
  DoneRounds done;
  LookedUp steps(work, done.rounds);
  RoundPlan plan = roundPlanOf(run);
  plan.fine = more;
  RoundsResult result;
  try {
    runRounds(plan, steps, result);
  } catch (const Error& error) {
    if (error.kind() != Error::BadInput) throw;
    done.missing = error.what();
  }
  return done;
}

}  // namespace Velorn::Flights
