// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What an adjustment determines, and how well: the cofactors Q = N⁻¹ of its unknowns, never formed
// as a whole.
//
//     const Cofactors cofactors(normal);
//     cofactors.standardDeviation({{misalignment, 1.0}, {offset, 1.0}, {rollOfStrip, 1.0}});
#pragma once

#include <Eigen/SparseCholesky>
#include <vector>

#include "adjustment/observability/NormalSum.h"

namespace Velorn {

/// A sparse factor of a normal matrix that may be singular. It is scaled to a diagonal of ones, and
/// a weak observation of every unknown, of weight 1e-10, is added. What only these determine is not
/// determined; of all the rest they change a part of 1e-10 over its eigenvalue.
class Cofactors {
 public:
  /// @throws std::invalid_argument for a matrix that is not square, not finite or clearly not
  ///         positive semidefinite
  explicit Cofactors(const NormalMatrix& normal);

  Eigen::Index unknowns() const { return scale_.size(); }

  /// Q B.
  /// @param right  B, n × k
  Eigen::MatrixXd times(const Eigen::MatrixXd& right) const;
  Eigen::VectorXd times(const LinearSum& sum) const;  ///< Q f

  /// sqrt(f'Qf), in the unit of f'x for weights of true standard deviations.
  /// @return infinite where nothing determines the sum; zero where it has no unknowns
  double standardDeviation(const LinearSum& sum) const;

  /// F'QF of the sums f in the columns of F; entries of about 1e10 times what is usual where a sum
  /// is not determined.
  Eigen::MatrixXd covariance(const std::vector<LinearSum>& sums) const;

 private:
  friend class SelectedInverse;

  Eigen::VectorXd scaled(const LinearSum& sum) const;

  Eigen::VectorXd scale_;  // 1 / sqrt of the diagonal of N; zero for what is no unknown
  Eigen::SimplicialLDLT<NormalMatrix> factor_;
};

/// Correlations of a covariance matrix; zero where a variance is.
Eigen::MatrixXd correlationsOf(const Eigen::MatrixXd& covariance);

/// The normal matrix of more or other observations with more unknowns, all those of `normal` first:
/// what the standard deviations of sums would be if a candidate strip were flown, or an inclined
/// patch measured.
/// @param normal     N of all rows there are
/// @param candidate  N of what would be added, with the a priori rows of its own unknowns
/// @return           one for each of the sums
std::vector<double> standardDeviationsWith(const NormalMatrix& normal,
                                           const NormalMatrix& candidate,
                                           const std::vector<LinearSum>& sums);

}  // namespace Velorn
