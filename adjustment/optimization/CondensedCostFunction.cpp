// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/CondensedCostFunction.h"

#include <algorithm>
#include <cmath>

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
  const auto asked = askedBlocks(jacobians, parameter_block_sizes().size());
  if (std::find(asked.begin(), asked.end(), true) == asked.end()) {
    return evaluateCost(evaluation, residuals);
  }
  const auto [columns, factor] = evaluation.condensed(asked, run_->threads);
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
    for (Eigen::Index row = 0; row < rows; ++row) {
      jacobians[block][row * blockSizes[block] + entry] = factor(row, static_cast<Eigen::Index>(i));
    }
  }
  return true;
}

bool CondensedCostFunction::evaluateCost(const PairEvaluation& evaluation,
                                         double* residuals) const {
  const double twiceCost = evaluation.twiceCost(run_->threads);
  std::fill_n(residuals, num_residuals(), 0.0);
  residuals[0] = std::sqrt(twiceCost);
  return std::isfinite(twiceCost);
}

}  // namespace Velorn
