// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Standard deviations from the scatter of chunks instead of from weights: a check of both.
#pragma once

#include <span>
#include <vector>

#include "adjustment/observability/Cofactors.h"

namespace Velorn {

/// A'Pr of the correspondences of one chunk at the solution.
struct ChunkGradient {
  std::vector<Eigen::Index> unknowns;
  Eigen::VectorXd gradient;  ///< of the unknowns, in their order
};

/// Standard deviations by Q (Σ g g' C/(C−1) + N_prior) Q over the C chunks (Liang and Zeger,
/// Biometrika 73, 1986): residuals of a chunk may be correlated in any way, those of different
/// chunks must not be. They agree with those of Q where the design effect is right. A scatter of
/// 1/sqrt(2C) is usual, and more where few chunks determine a sum; they are a little too small
/// since residuals are smaller than errors.
/// @param cofactors  of all rows
/// @param prior      N of the a priori rows
/// @param sums       what the standard deviations are asked of
/// @throws std::invalid_argument for fewer than two chunks, or a gradient of another size
std::vector<double> sandwichDeviations(const Cofactors& cofactors,
                                       std::span<const ChunkGradient> chunks,
                                       const NormalMatrix& prior,
                                       const std::vector<LinearSum>& sums);

}  // namespace Velorn
