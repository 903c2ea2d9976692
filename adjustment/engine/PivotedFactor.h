// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A factor of a normal matrix that may be singular.
#pragma once

#include <Eigen/Core>

namespace Velorn {

/// R with R'R = A, by Cholesky's method with the largest pivot first, on the matrix scaled to a
/// diagonal of ones; it ends at a pivot of 1e-15, from where on there is only rounding. Without
/// pivots, that rounding would be divided by its own root.
/// @param matrix  A, symmetric, positive semidefinite, finite
/// @return as many rows as pivots were taken; zero columns where A has them
Eigen::MatrixXd pivotedFactor(const Eigen::MatrixXd& matrix);

}  // namespace Velorn
