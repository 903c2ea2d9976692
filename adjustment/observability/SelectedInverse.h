// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Those cofactors that traces need: all that belong to entries of the normal matrix. They cost
// about as much as its factor, where a whole inverse of ten thousand unknowns would take 800 MB.
#pragma once

#include "adjustment/observability/Cofactors.h"

namespace Velorn {

/// Entries of Q where N or its factor have some (Takahashi, Fagan and Chen, PICA Conference 1973;
/// Erisman and Tinney, Communications of the ACM 18, 1975).
class SelectedInverse {
 public:
  explicit SelectedInverse(const Cofactors& cofactors);

  /// Q_ij.
  /// @throws std::invalid_argument, naming both, for unknowns that no observation has in common.
  ///         Adding 0 times a matrix to the normal matrix before gives its entries a place.
  double at(Eigen::Index i, Eigen::Index j) const;

  /// Variances of all unknowns, zero of what is none.
  Eigen::VectorXd diagonal() const;

  /// diag(Q N_g) of a group of observations: its share in each unknown. The shares of all groups
  /// sum up to 1; those of the a priori rows above one half tell that an unknown comes from the
  /// data sheet rather than from the flight.
  Eigen::VectorXd sharesOf(const NormalMatrix& group) const;

  /// trace(Q N_g): how many unknowns the group determines.
  double traceWith(const NormalMatrix& group) const { return sharesOf(group).sum(); }

 private:
  Eigen::VectorXd scale_;
  Eigen::VectorXi place_;      // of each unknown in the order of the factor
  Eigen::VectorXd variances_;  // in that order, scaled, as the entries
  NormalMatrix entries_;       // below the diagonal
};

}  // namespace Velorn
