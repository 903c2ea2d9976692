// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/ProblemSolve.h"

#include <algorithm>

#include <ceres/iteration_callback.h>
#include <ceres/solver.h>
#include <fmt/format.h>

#include "adjustment/optimization/CondensedProblem.h"
#include "adjustment/optimization/CorrespondenceFolder.h"
#include "adjustment/optimization/InnerOrdering.h"
#include "adjustment/optimization/NormalGroups.h"
#include "adjustment/optimization/SolverOptions.h"
#include "platform/morvane/Console.h"

namespace Velorn {
namespace {

constexpr int mostWeighings = 4;

/// Ends a solve when the host wants it.
class Cancellation : public ceres::IterationCallback {
 public:
  explicit Cancellation(const std::function<bool()>& isCancelled) : isCancelled_(isCancelled) {}

  ceres::CallbackReturnType operator()(const ceres::IterationSummary& /*step*/) override {
    return isAsked() ? ceres::SOLVER_ABORT : ceres::SOLVER_CONTINUE;
  }
  bool isAsked() const { return isCancelled_ && isCancelled_(); }

 private:
  const std::function<bool()>& isCancelled_;
};

/// @param before  of the solves that came before this one
SolverEnd endOf(const ceres::Solver::Summary& summary, const SolverEnd& before) {
  SolverEnd end;
  end.termination = ceres::TerminationTypeToString(summary.termination_type);
  end.message = summary.message;
  end.initialCost = summary.initial_cost;
  end.finalCost = summary.final_cost;
  end.successfulSteps = before.successfulSteps + summary.num_successful_steps;
  end.unsuccessfulSteps = before.unsuccessfulSteps + summary.num_unsuccessful_steps;
  end.seconds = before.seconds + summary.total_time_in_seconds;
  end.residuals = summary.num_residuals;
  end.parameters = summary.num_parameters;
  return end;
}

}  // namespace

ProblemSolve::ProblemSolve(const ProblemInputs& inputs)
    : inputs_(inputs), threads_(std::max(1, solverOptions(inputs.configuration).num_threads)) {}

bool ProblemSolve::isCondensed() const {
  return inputs_.settings.evaluation == Evaluation::Condensed;
}

/// The reference reads the correspondences again for every problem. What is known before needs the
/// engine's sums either way.
std::string ProblemSolve::fillProblem(ceres::Problem& problem) {
  std::size_t groundTruth = 0;
  std::string fault;
  if ((isCondensed() || inputs_.knowledge) && !run_) {
    fault = readCondensed(inputs_, threads_, run_, groundTruth);
  }
  if (!fault.empty()) return fault;
  if (isCondensed()) {
    fillCondensed(problem, inputs_, run_);
  } else {
    fault = fill(problem, inputs_, groundTruth);
  }
  if (!fault.empty() || isFilled_) return fault;
  isFilled_ = true;
  Morvane::Console::writeLine(
      fmt::format("\n7) DONE FILLING CERES:  # of total correspondence files: {}. "
                  "GroundTruthCorrespondences: {}",
                  entriesOfCorrespondenceFolder(inputs_.configuration), groundTruth));
  return {};
}

std::string ProblemSolve::once() {
  ceres::Problem problem;
  if (auto fault = fillProblem(problem); !fault.empty()) return fault;
  auto options = solverOptions(inputs_.configuration);
  if (isCondensed()) options.num_threads = std::min(options.num_threads, 1);  // see readCondensed
  if (inputs_.knowledge) {
    endAtMinimum(options);
  } else {
    options.inner_iteration_ordering = innerOrderingOf(problem);
  }
  Cancellation cancellation(inputs_.settings.isCancelled);
  options.callbacks = {&cancellation};
  ceres::Solver::Summary summary;
  if (cancellation.isAsked()) {
    summary.termination_type = ceres::USER_FAILURE;
    summary.message = "Cancelled before the first step.";
  } else {
    ceres::Solve(options, &problem, &summary);
  }
  if (isCondensed()) putTrueCounts(problem, threads_, summary);
  end_ = endOf(summary, end_);
  fullReport_ = summary.FullReport();
  return {};
}

void ProblemSolve::addPrecision(AdjustmentResult& result) const {
  Velorn::addPrecision(inputs_, *run_, result);
}

std::string ProblemSolve::weighingAnew(Knowledge& knowledge) {
  while (true) {
    if (auto fault = once(); !fault.empty()) return fault;
    const auto& deviations = knowledge.model.deviations();
    if (!end_.isConvergence() || deviations.isSettled) return {};
    if (deviations.rounds == mostWeighings) return {};
    estimateDeviations(inputs_, *run_, knowledge);
  }
}

}  // namespace Velorn
