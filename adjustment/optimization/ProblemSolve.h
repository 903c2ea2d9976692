// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The solver at work on the correspondences of a run.
#pragma once

#include <memory>
#include <string>

#include <ceres/problem.h>

#include "adjustment/optimization/AdjustmentProblem.h"
#include "adjustment/optimization/CondensedCostFunction.h"
#include <velorn/AdjustmentResult.h>

namespace Velorn {

class ProblemSolve {
 public:
  /// @param inputs  kept
  explicit ProblemSolve(const ProblemInputs& inputs);

  /// Reads the correspondences, unless they are read, and goes from the present values of the
  /// unknowns to those of the solution.
  /// @return empty, or the first fault
  /// @throws as CeresOptimization::run
  std::string once();
  /// The same, again and again, with the standard deviations that the residuals of the solution
  /// before tell, until they are settled or the solver does not converge.
  /// @param knowledge  that of the inputs
  std::string weighingAnew(Knowledge& knowledge);

  /// Adds how well unknowns are determined to a result. Only with knowledge.
  void addPrecision(AdjustmentResult& result) const;

  /// Of the last solution; steps and time are those of all.
  const SolverEnd& end() const { return end_; }
  const std::string& fullReport() const { return fullReport_; }

 private:
  bool isCondensed() const;
  std::string fillProblem(ceres::Problem& problem);

  const ProblemInputs& inputs_;
  int threads_;
  std::shared_ptr<CondensedRun> run_;
  bool isFilled_ = false;  // once at least
  SolverEnd end_;
  std::string fullReport_;
};

}  // namespace Velorn
