// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/CondensedProblem.h"

#include <algorithm>

#include "adjustment/optimization/CondensedCostFunction.h"
#include "adjustment/optimization/ParameterBlocks.h"
#include "adjustment/optimization/PlacedCorrespondences.h"

namespace Velorn {
namespace {

CorrespondenceStore::Side storedSideOf(const PlacedPoint& point) {
  return {point.being, point.week, point.section};
}

void add(CorrespondenceStore& store, const PlacedCorrespondence& correspondence) {
  const auto first = storedSideOf(correspondence.first);
  if (correspondence.second) {
    store.addPair(first, storedSideOf(*correspondence.second));
  } else {
    store.addGroundTruth(first, correspondence.groundTruth);
  }
}

std::vector<Section> sectionsOf(const SectionPair& pair) {
  std::vector<Section> sections{pair.first};
  if (pair.second) sections.push_back(*pair.second);
  return sections;
}

/// Of a problem that fill made.
std::size_t rowsOf(const ceres::CostFunction& cost) {
  const auto* const condensed = dynamic_cast<const CondensedCostFunction*>(&cost);
  return condensed ? condensed->pair().size() : static_cast<std::size_t>(cost.num_residuals());
}

bool isFixed(const ceres::Problem& problem, ceres::ResidualBlockId residual) {
  std::vector<double*> blocks;
  problem.GetParameterBlocksForResidualBlock(residual, &blocks);
  return std::all_of(blocks.begin(), blocks.end(),
                     [&](const double* block) { return problem.IsParameterBlockConstant(block); });
}

}  // namespace

std::string readCondensed(const ProblemInputs& inputs, int threads,
                          std::shared_ptr<CondensedRun>& run, std::size_t& groundTruth) {
  run = std::make_shared<CondensedRun>(
      CondensedRun{{inputs.trajectory, inputs.weights(), inputs.configuration.InterpolationFlag,
                    inputs.costFactors()},
                   threads});
  groundTruth = 0;
  auto fault = walkPlacedCorrespondences(inputs, [&](const PlacedCorrespondence& correspondence) {
    add(run->store, correspondence);
    if (!correspondence.second) ++groundTruth;
  });
  run->store.close();
  return fault;
}

void fillCondensed(ceres::Problem& problem, const ProblemInputs& inputs,
                   const std::shared_ptr<const CondensedRun>& run) {
  for (const auto& pair : run->store.pairs()) {
    const auto sections = sectionsOf(pair);
    const auto blocks = parameterBlocks(inputs.parameters, sections);
    problem.AddResidualBlock(new CondensedCostFunction(run, pair), nullptr, blocks);
    holdSections(problem, inputs, sections, blocks);
  }
  addPriors(problem, inputs);
  holdGlobals(problem, inputs);
}

std::string fillCondensed(ceres::Problem& problem, const ProblemInputs& inputs, int threads,
                          std::size_t& groundTruth) {
  std::shared_ptr<CondensedRun> run;
  auto fault = readCondensed(inputs, threads, run, groundTruth);
  if (fault.empty()) fillCondensed(problem, inputs, run);
  return fault;
}

void putTrueCounts(const ceres::Problem& problem, int threads, ceres::Solver::Summary& summary) {
  if (summary.num_residuals < 0) return;  // the solver did not begin
  std::size_t all = 0, free = 0;
  std::vector<ceres::ResidualBlockId> residuals;
  problem.GetResidualBlocks(&residuals);
  for (const auto& residual : residuals) {
    const std::size_t rows = rowsOf(*problem.GetCostFunctionForResidualBlock(residual));
    all += rows;
    if (!isFixed(problem, residual)) free += rows;
  }
  summary.num_residuals = summary.num_residual_blocks = static_cast<int>(all);
  summary.num_residuals_reduced = summary.num_residual_blocks_reduced = static_cast<int>(free);
  summary.num_threads_given = summary.num_threads_used = threads;
}

}  // namespace Velorn
