// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Rows of a priori knowledge as a residual block.
#pragma once

#include <vector>

#include <ceres/cost_function.h>
#include <ceres/problem.h>

#include "adjustment/stochastics/LinearSum.h"
#include <velorn/SolverParameters.h>

namespace Velorn {

/// r = A x − e of a few unknowns.
class PriorCostFunction : public ceres::CostFunction {
 public:
  /// Where a column of A lies among the blocks of unknowns.
  struct Place {
    std::size_t block;
    int entry;
  };

  /// @param places  of the rows' unknowns
  /// @param sizes   of the blocks
  PriorCostFunction(PriorRows rows, std::vector<Place> places, const std::vector<int>& sizes);

  bool Evaluate(double const* const* parameters, double* residuals,
                double** jacobians) const override;

 private:
  PriorRows rows_;
  std::vector<Place> places_;
};

/// Adds the rows to a problem as one block; nothing where there are none.
void addPrior(PriorRows rows, SolverParameters& parameters, ceres::Problem& problem);

}  // namespace Velorn
