// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The normal matrix of an adjustment, or of a group of its observations, as a sum of small ones:
// of pairs of sections and of a priori rows, each of which knows a few unknowns.
#pragma once

#include <Eigen/SparseCore>
#include <map>
#include <span>
#include <vector>

#include "adjustment/stochastics/LinearSum.h"

namespace Velorn {

/// N = Σ A'PA, n × n with both triangles. A row without entries is an unknown that no observation
/// knows and that is therefore no unknown: its cofactors are zero.
using NormalMatrix = Eigen::SparseMatrix<double>;

class NormalSum {
 public:
  /// @param unknowns  n
  explicit NormalSum(Eigen::Index unknowns) : unknowns_(unknowns) {}

  /// Adds `factor` times a block.
  /// @param unknowns  places of its rows and columns, each once
  /// @param block     symmetric, as many rows and columns
  /// @throws std::invalid_argument, naming it, for another shape, a place beyond n and a value that
  ///         is not finite
  void add(const std::vector<Eigen::Index>& unknowns, const Eigen::MatrixXd& block,
           double factor = 1.0);
  void add(std::span<const PriorRows> rows);

  NormalMatrix matrix() const;

 private:
  Eigen::Index unknowns_;
  std::map<std::vector<Eigen::Index>, Eigen::MatrixXd> blocks_;
};

}  // namespace Velorn
