// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// All correspondences of two sections as one residual block.
#pragma once

#include <memory>
#include <vector>

#include <ceres/cost_function.h>

#include "adjustment/engine/PairEvaluation.h"

namespace Velorn {

/// What the blocks of a problem have in common.
struct CondensedRun {
  CorrespondenceStore store;
  int threads;  ///< that one evaluation takes
};

/// Stands for the residuals r of a pair of sections with their Jacobian J, after Huber's function:
/// hands the solver a factor [F f] with F'F = J'J, F'f = J'r and f'f = Σ ρ(r²), of at most as many
/// rows as it has columns, in place of the many rows of J. Cost, gradient and Gauss-Newton's matrix
/// are those of the single residuals, and so is the solver's path.
///
/// The solver asks for the cost of a step, and if it takes it, for the derivatives there; in inner
/// iterations it asks for those by one block of unknowns after the other, mostly at the same
/// unknowns. So where a step of several blocks leads, all derivatives that were ever asked for are
/// computed together with the cost, and kept: some columns of F serve for these columns of J. An
/// evaluation must have ended before the next one begins.
class CondensedCostFunction : public ceres::CostFunction {
 public:
  /// @param pair  of the run's store
  CondensedCostFunction(std::shared_ptr<const CondensedRun> run, const SectionPair& pair);

  /// @return false for a pair with a fault, after a message on the console, and for unknowns with
  ///         which a residual is not finite
  bool Evaluate(double const* const* parameters, double* residuals,
                double** jacobians) const override;

  const std::shared_ptr<const CondensedRun>& run() const { return run_; }
  const SectionPair& pair() const { return pair_; }

 private:
  using Asked = PairEvaluation::Asked;

  /// The last evaluation with derivatives, and by which blocks; and the last one without.
  struct Kept {
    std::vector<double> unknowns;
    Asked blocks;
    CondensedRows condensed;
    std::vector<double> costUnknowns;
    double twiceCost;
  };

  std::vector<double> unknownsOf(double const* const* parameters) const;
  bool isStepOfSeveralBlocks(const std::vector<double>& unknowns) const;
  double twiceCost(const PairEvaluation& evaluation, const std::vector<double>& unknowns) const;
  const CondensedRows& condensed(const PairEvaluation& evaluation,
                                 const std::vector<double>& unknowns, const Asked& asked) const;
  bool putCost(double twiceCost, double* residuals) const;
  bool putRows(const CondensedRows& condensed, const Asked& asked, double* residuals,
               double** jacobians) const;

  std::shared_ptr<const CondensedRun> run_;
  const SectionPair& pair_;
  mutable Kept kept_{};
};

}  // namespace Velorn
