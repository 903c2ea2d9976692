// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The steps of the rounds as they are done: matching and adjusting the strips of a run.
#pragma once

#include <memory>
#include <optional>

#include "flight/chain/RoundRules.h"
#include "flight/chain/RunContext.h"
#include "flight/matching/Match.h"
#include "flight/surfaces/Solution.h"
#include <velorn/SolverParameters.h>
#include <velorn/flight/Adjust.h>

namespace Velorn::Flights {

/// What the settings say of the rounds.
RoundPlan roundPlanOf(const RunContext& run);

/// How a run matches where its strips do not lie far apart.
MatchOptions matchOptionsOf(const RunContext& run);

/// The model of the files, of the run's strips.
/// @throws Error that names the file
std::shared_ptr<const Velorn::SolverParameters> restoredParameters(const RunContext& run,
                                                                   const ModelFiles& files);

/// What is known of a flight before, with what was delivered.
Velorn::APrioriKnowledge knowledgeFor(const RunContext& run);

/// What an adjustment of a run takes: the folder of its blocks, and the start of the round.
AdjustmentInput adjustmentInputOf(RunContext& run, const Round& round);

class RoundWork final : public RoundSteps {
 public:
  explicit RoundWork(RunContext& run) : run_(run) {}

  ApartReport apart() override;
  std::optional<RoundReport> finished(const Round& round) override;
  MatchReport match(const Round& round) override;
  AdjustmentReport adjust(const Round& round) override;
  void keep(const Round& round, const RoundReport& report) override;
  std::string digestOf(const Round& round) override;

  /// The matching of a round as an earlier run has it, if its blocks are still there.
  std::optional<MatchReport> matched(const Round& round) const;
  /// @throws Error that says why the run's folder does not have the round
  void requireRound(const Round& round) const;
  /// Matches a round once more, and touches nothing of the run.
  /// @param scratch  folder for blocks and rasters that nobody needs
  MatchReport matchAgain(const Round& round, const std::filesystem::path& scratch,
                         const PairObserver& observe);
  std::shared_ptr<const Velorn::SolverParameters> parametersOf(const RoundModel& model) const;

  /// The strips as a round sees them anew that begins with the model.
  SurfaceStore seenAnew(const RoundModel& model);
  void tell(const std::string& line) override { run_.tell(line); }

 private:
  StepKey matchKey(const Round& round) const;
  StepKey adjustKey(const Round& round) const;
  StepRecord matchRecord(const Round& round) const;
  StepRecord adjustRecord(const Round& round) const;
  double spacing();
  double movedBy(const Solution* start);
  /// Where a matching writes, and who looks at it.
  struct Output {
    std::filesystem::path root;     ///< of the folder of blocks
    std::filesystem::path rasters;  ///< of a round that sees the strips anew
    PairObserver observe;
  };
  MatchReport matchAnew(const Round& round, const Output& output);

  RunContext& run_;
  std::shared_ptr<const Velorn::SolverParameters> adjusted_;  // of the adjustment done last
  std::optional<ModelFiles> adjustedFiles_;
  std::optional<double> spacing_;  // of the strips' points [m]: measured once, when it is needed
};

}  // namespace Velorn::Flights
