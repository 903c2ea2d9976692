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
/// The solver's inner iterations ask for the derivatives by one block of unknowns after the other,
/// mostly at the same unknowns: at the first of these, those by all blocks that it ever asked for
/// are computed and kept, since some columns of F serve for these columns of J. So an evaluation
/// must have ended before the next one begins.
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
  struct Cost {
    std::vector<double> unknowns;
    double twiceCost;
  };
  struct Rows {
    std::vector<double> unknowns;
    PairEvaluation::Asked blocks;
    CondensedRows condensed;
  };

  std::vector<double> unknownsOf(double const* const* parameters) const;
  bool putCost(const PairEvaluation& evaluation, const std::vector<double>& unknowns,
               double* residuals) const;
  bool putRows(const PairEvaluation& evaluation, const std::vector<double>& unknowns,
               const PairEvaluation::Asked& asked, double* residuals, double** jacobians) const;

  std::shared_ptr<const CondensedRun> run_;
  const SectionPair& pair_;
  mutable Cost lastCost_{};
  mutable Rows lastRows_{};
};

}  // namespace Velorn
