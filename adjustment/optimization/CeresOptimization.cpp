// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <optional>
#include <stdexcept>

#include <fmt/format.h>

#include "adjustment/optimization/ProblemSolve.h"
#include "adjustment/optimization/SectionReport.h"
#include "platform/morvane/Console.h"
#include <velorn/CeresOptimization.h>

namespace Velorn {
namespace {

// Residuals per unknown; outside these bounds a warning is written.
constexpr double fewestPerUnknown = 50.0, mostPerUnknown = 1000.0;

/// @throws std::invalid_argument for what cannot be known
Knowledge knowledgeOf(const APrioriKnowledge& known, const ProblemInputs& inputs) {
  return {flightPriors(known, inputs.parameters.getStripSections()),
          {known, inputs.weights().size()}};
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
  ProblemInputs inputs{solverParameters, trajectory, inputParameter, settings,
                       correspondencesPerSection};
  try {
    std::optional<Knowledge> knowledge;
    if (settings.knowledge) knowledge = knowledgeOf(*settings.knowledge, inputs);
    if (knowledge) inputs.knowledge = &*knowledge;
    ProblemSolve solve(inputs);
    auto fault = knowledge ? solve.weighingAnew(*knowledge) : solve.once();
    if (!fault.empty()) return fault;
    if (knowledge) {
      outcome.deviations = knowledge->model.deviations();
      if (solve.end().isConvergence()) solve.addPrecision(outcome);
    }
    outcome.end = solve.end();
    outcome.end.estimated = estimatedUnknowns(outcome.sections, settings);
    fullReport = solve.fullReport();
    return {};
  } catch (const std::invalid_argument& refused) {
    if (!settings.knowledge) throw;
    return std::string("CeresOptimization::run: ") + refused.what();
  }
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
