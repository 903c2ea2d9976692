// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include <ceres/iteration_callback.h>
#include <ceres/solver.h>
#include <fmt/format.h>

#include "adjustment/optimization/AdjustmentProblem.h"
#include "adjustment/optimization/CondensedProblem.h"
#include "adjustment/optimization/CorrespondenceFolder.h"
#include "adjustment/optimization/InnerOrdering.h"
#include "adjustment/optimization/SectionReport.h"
#include "adjustment/optimization/SolverOptions.h"
#include "platform/morvane/Console.h"
#include <velorn/CeresOptimization.h>

namespace Velorn {
namespace {

// Residuals per unknown; outside these bounds a warning is written.
constexpr double fewestPerUnknown = 50.0, mostPerUnknown = 1000.0;

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

SolverEnd endOf(const ceres::Solver::Summary& summary) {
  SolverEnd end;
  end.termination = ceres::TerminationTypeToString(summary.termination_type);
  end.message = summary.message;
  end.initialCost = summary.initial_cost;
  end.finalCost = summary.final_cost;
  end.successfulSteps = summary.num_successful_steps;
  end.unsuccessfulSteps = summary.num_unsuccessful_steps;
  end.seconds = summary.total_time_in_seconds;
  end.residuals = summary.num_residuals;
  end.parameters = summary.num_parameters;
  return end;
}

}  // namespace

CeresOptimization::CeresOptimization(SolverParameters& parameters, const Trajectory& path,
                                     const InputParameter& configuration,
                                     const FileContainer& files)
    : solverParameters(parameters),
      trajectory(path),
      inputParameter(configuration),
      fileContainer(files) {}

std::string CeresOptimization::run() {
  outcome = {};
  std::vector<unsigned> correspondencesPerSection(solverParameters.numberOfSectionsForAllStrips());
  if (auto fault = check(correspondencesPerSection); !fault.empty()) return fault;
  std::string fullReport;
  if (auto fault = solve(correspondencesPerSection, fullReport); !fault.empty()) return fault;
  if (outcome.end.termination == "NO_CONVERGENCE") {
    writeStatus("03_SolverStatus_Error.txt", fullReport);
    return "NO_CONVERGENCE";
  }
  if (outcome.end.isCancelled()) return "CeresOptimization::run: cancelled";
  solved = true;
  warnOfFailure();
  warnOfResidualRatio();
  solverParameters.saveParameterFile(inputParameter.FileSuffix);
  writeStatus("03_SolverStatus.txt", fullReport);
  return computeStatistics(outcome);
}

std::string CeresOptimization::solve(const std::vector<unsigned>& correspondencesPerSection,
                                     std::string& fullReport) {
  const std::size_t entries = entriesOfCorrespondenceFolder(inputParameter);
  ceres::Problem problem;
  std::size_t groundTruth = 0;
  const ProblemInputs inputs{solverParameters, trajectory, inputParameter, settings,
                             correspondencesPerSection};
  const bool isCondensed = settings.evaluation == Evaluation::Condensed;
  auto options = solverOptions(inputParameter);
  const int threads = options.num_threads;
  if (isCondensed) options.num_threads = std::min(threads, 1);  // see fillCondensed
  auto fault = isCondensed ? fillCondensed(problem, inputs, std::max(threads, 1), groundTruth)
                           : fill(problem, inputs, groundTruth);
  if (!fault.empty()) return fault;
  Morvane::Console::writeLine(
      fmt::format("\n7) DONE FILLING CERES:  # of total correspondence files: {}. "
                  "GroundTruthCorrespondences: {}",
                  entries, groundTruth));
  Cancellation cancellation(settings.isCancelled);
  options.callbacks = {&cancellation};
  options.inner_iteration_ordering = innerOrderingOf(problem);
  ceres::Solver::Summary summary;
  if (cancellation.isAsked()) {
    summary.termination_type = ceres::USER_FAILURE;
    summary.message = "Cancelled before the first step.";
  } else {
    ceres::Solve(options, &problem, &summary);
  }
  if (isCondensed) putTrueCounts(problem, threads, summary);
  outcome.end = endOf(summary);
  outcome.end.estimated = estimatedUnknowns(outcome.sections, settings);
  fullReport = summary.FullReport();
  return {};
}

/// A failure counts as finished; without this the host would take the start values for a result.
void CeresOptimization::warnOfFailure() const {
  if (outcome.end.termination != "FAILURE") return;
  Morvane::Console::writeLine(
      "CeresOptimization::run -> Warning, the solver failed, and the unknowns that are written are "
      "those before it: " +
      outcome.end.message);
}

void CeresOptimization::warnOfResidualRatio() const {
  const double ratio = static_cast<double>(outcome.end.residuals) / outcome.end.parameters;
  if (!(ratio > mostPerUnknown || ratio < fewestPerUnknown)) return;
  writeStatus("03_SolverStatus_WARNING_TooManyResiduals.txt",
              fmt::format("residual_ratio {}", ratio));
}

}  // namespace Velorn
