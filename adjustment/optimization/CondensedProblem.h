// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The same problem as AdjustmentProblem.h makes, with one residual block for each pair of sections
// in place of one for each correspondence.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include <ceres/solver.h>

#include "adjustment/optimization/AdjustmentProblem.h"
#include "adjustment/optimization/CondensedCostFunction.h"

namespace Velorn {

/// Reads the correspondences of a folder.
/// @param threads      that one evaluation takes, at least 1; the solver itself must take one only,
///                     by which the sums are the same for any number of threads
/// @param run          receives them
/// @param groundTruth  receives the number of those with the ground truth
/// @return empty, or the first fault; the run is then of no use
/// @throws as CeresOptimization::run
std::string readCondensed(const ProblemInputs& inputs, int threads,
                          std::shared_ptr<CondensedRun>& run, std::size_t& groundTruth);

/// Reads and fills.
std::string fillCondensed(ceres::Problem& problem, const ProblemInputs& inputs, int threads,
                          std::size_t& groundTruth);

/// As fill; the blocks of unknowns come into the problem in the same order.
void fillCondensed(ceres::Problem& problem, const ProblemInputs& inputs,
                   const std::shared_ptr<const CondensedRun>& run);

/// Puts the numbers of the correspondences in place of those of the blocks, as the solver counts
/// them in a problem that fill made, and the threads of the evaluation in place of the solver's.
/// @param problem  of fillCondensed
void putTrueCounts(const ceres::Problem& problem, int threads, ceres::Solver::Summary& summary);

}  // namespace Velorn
