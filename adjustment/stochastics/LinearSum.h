// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Sums of unknowns with factors, and rows of them: what a priori knowledge is told as, and what a
// standard deviation is asked of.
#pragma once

#include <Eigen/Core>
#include <map>
#include <vector>

namespace Velorn {

/// f'x: place in the vector of unknowns x -> factor.
using LinearSum = std::map<Eigen::Index, double>;

/// a + factor b
LinearSum sumOf(LinearSum a, const LinearSum& b, double factor = 1.0);

/// f'x
double valueOf(const LinearSum& sum, const Eigen::VectorXd& unknowns);

/// Rows of standard deviation 1 that an adjustment takes as they are: r = A x_u − e, the cost grows
/// by r'r / 2. Their Jacobian A is constant, their normal matrix A'A.
struct PriorRows {
  std::vector<Eigen::Index> unknowns;  ///< u: places in the vector of unknowns, ascending, n
  Eigen::MatrixXd rows;                ///< A, m × n
  Eigen::VectorXd expected;            ///< e, m

  Eigen::VectorXd residuals(const Eigen::VectorXd& x) const;
};

/// Rows whose expectation is zero.
PriorRows rowsOf(const std::vector<LinearSum>& sums);

}  // namespace Velorn
