// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The same problem as AdjustmentProblem.h makes, with one residual block for each pair of sections
// in place of one for each correspondence.
#pragma once

#include <ceres/solver.h>

#include "adjustment/optimization/AdjustmentProblem.h"

namespace Velorn {

/// As fill; the blocks of unknowns come into the problem in the same order.
/// @param threads  that one evaluation takes, at least 1; the solver itself must take one only, by
///                 which the sums are the same for any number of threads
std::string fillCondensed(ceres::Problem& problem, const ProblemInputs& inputs, int threads,
                          std::size_t& groundTruth);

/// Puts the numbers of the correspondences in place of those of the blocks, as the solver counts
/// them in a problem that fill made, and the threads of the evaluation in place of the solver's.
/// @param problem  of fillCondensed
void putTrueCounts(const ceres::Problem& problem, int threads, ceres::Solver::Summary& summary);

}  // namespace Velorn
