// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The correspondences of a folder as a problem of the solver.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <ceres/problem.h>

#include "adjustment/stochastics/StochasticModel.h"
#include <velorn/CeresOptimization.h>

namespace Velorn {

/// What is known before, as rows, and what everything is weighed with.
struct Knowledge {
  std::vector<FlightPrior> priors;  ///< as expected
  StochasticModel model;
};

/// What a problem is made from.
struct ProblemInputs {
  SolverParameters& parameters;
  const Trajectory& trajectory;
  const InputParameter& configuration;
  const AdjustmentSettings& settings;
  const std::vector<unsigned>& correspondencesPerSection;
  const Knowledge* knowledge = nullptr;  ///< null: a free adjustment

  /// By class: of the residuals, and of their costs after Huber's function.
  /// @{
  const std::vector<double>& weights() const;
  std::vector<double> costFactors() const;
  /// @}
};

/// Adds one residual per correspondence, and holds weak and locked sections constant, and the
/// global blocks that are not to be estimated.
/// @param groundTruth  receives the number of residuals with the ground truth
/// @return empty, or the first fault; the problem is then of no use
/// @throws as CeresOptimization::run
std::string fill(ceres::Problem& problem, const ProblemInputs& inputs, std::size_t& groundTruth);

}  // namespace Velorn
