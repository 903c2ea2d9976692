// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/CondensedCostFunction.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "platform/morvane/Console.h"

namespace Velorn {
namespace {

PairEvaluation::Asked askedBlocks(double* const* jacobians, std::size_t blocks) {
  PairEvaluation::Asked asked{};
  for (std::size_t k = 0; jacobians && k < blocks; ++k) asked[k] = jacobians[k] != nullptr;
  return asked;
}

}  // namespace

CondensedCostFunction::CondensedCostFunction(std::shared_ptr<const CondensedRun> run,
                                             const SectionPair& pair)
    : run_(std::move(run)), pair_(pair) {
  const std::size_t blocks = pair.second ? unknownBlocks : unknownBlocks - 2;
  mutable_parameter_block_sizes()->assign(blockSizes.begin(),
                                          blockSizes.begin() + static_cast<int>(blocks));
  const Columns all{PairEvaluation::everyBlock,
                    {usedPowers(pair.first.type),
                     pair.second ? usedPowers(pair.second->type) : UsedPowers{0, 0}}};
  set_num_residuals(static_cast<int>(std::min(all.places().size(), pair.size()) + 1));
}

bool CondensedCostFunction::Evaluate(double const* const* parameters, double* residuals,
                                     double** jacobians) const {
  if (!pair_.fault.empty()) {
    Morvane::Console::writeLine("CondensedCostFunction: " + pair_.fault);
    return false;
  }
  const PairEvaluation evaluation(run_->store, pair_, parameters);
  const auto unknowns = unknownsOf(parameters);
  const auto asked = askedBlocks(jacobians, parameter_block_sizes().size());
  if (std::find(asked.begin(), asked.end(), true) == asked.end()) {
    return putCost(twiceCost(evaluation, unknowns), residuals);
  }
  return putRows(condensed(evaluation, unknowns, asked), asked, residuals, jacobians);
}

std::vector<double> CondensedCostFunction::unknownsOf(double const* const* parameters) const {
  std::vector<double> unknowns;
  for (std::size_t k = 0; k < parameter_block_sizes().size(); ++k) {
    unknowns.insert(unknowns.end(), parameters[k], parameters[k] + blockSizes[k]);
  }
  return unknowns;
}

/// From those of the last derivatives on.
bool CondensedCostFunction::isStepOfSeveralBlocks(const std::vector<double>& unknowns) const {
  if (kept_.unknowns.empty()) return false;
  int changed = 0;
  auto from = unknowns.cbegin(), known = kept_.unknowns.cbegin();
  for (const int size : parameter_block_sizes()) {
    changed += std::equal(from, from + size, known) ? 0 : 1;
    from += size;
    known += size;
  }
  return changed > 1;
}

double CondensedCostFunction::twiceCost(const PairEvaluation& evaluation,
                                        const std::vector<double>& unknowns) const {
  if (isStepOfSeveralBlocks(unknowns)) condensed(evaluation, unknowns, kept_.blocks);
  if (unknowns == kept_.unknowns) return kept_.condensed.twiceCost;
  if (unknowns != kept_.costUnknowns) {
    kept_.twiceCost = evaluation.twiceCost(run_->threads);
    kept_.costUnknowns = unknowns;
  }
  return kept_.twiceCost;
}

const CondensedRows& CondensedCostFunction::condensed(const PairEvaluation& evaluation,
                                                      const std::vector<double>& unknowns,
                                                      const Asked& asked) const {
  auto& blocks = kept_.blocks;
  const bool isCovered =
      std::equal(asked.begin(), asked.end(), blocks.begin(), std::less_equal<>());
  if (!isCovered || unknowns != kept_.unknowns) {
    std::transform(asked.begin(), asked.end(), blocks.begin(), blocks.begin(), std::logical_or<>());
    kept_.condensed = evaluation.condensed(blocks, run_->threads);
    kept_.unknowns = unknowns;
  }
  return kept_.condensed;
}

bool CondensedCostFunction::putCost(double twiceCost, double* residuals) const {
  std::fill_n(residuals, num_residuals(), 0.0);
  residuals[0] = std::sqrt(twiceCost);
  return std::isfinite(twiceCost);
}

bool CondensedCostFunction::putRows(const CondensedRows& condensed, const Asked& asked,
                                    double* residuals, double** jacobians) const {
  const auto& [columns, factor, unused] = condensed;
  if (factor.cols() == 0) return false;
  // Pivots beyond the number of correspondences are rounding.
  const Eigen::Index rows = std::min<Eigen::Index>(factor.rows(), num_residuals());
  std::fill_n(residuals, num_residuals(), 0.0);
  Eigen::VectorXd::Map(residuals, rows) = factor.rightCols<1>().head(rows);
  for (std::size_t k = 0; k < asked.size(); ++k) {
    if (asked[k]) std::fill_n(jacobians[k], num_residuals() * blockSizes[k], 0.0);
  }
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const auto [block, entry] = columns[i];
    if (!asked[block]) continue;
    for (Eigen::Index row = 0; row < rows; ++row) {
      jacobians[block][row * blockSizes[block] + entry] = factor(row, static_cast<Eigen::Index>(i));
    }
  }
  return true;
}

}  // namespace Velorn
