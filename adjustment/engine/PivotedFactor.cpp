// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/PivotedFactor.h"

#include <cmath>

namespace Velorn {
namespace {

constexpr double smallestPivot = 1e-15;

}  // namespace

Eigen::MatrixXd pivotedFactor(const Eigen::MatrixXd& matrix) {
  const Eigen::Index n = matrix.rows();
  const Eigen::VectorXd scale = matrix.diagonal().cwiseMax(0.0).cwiseSqrt();
  const Eigen::VectorXd inverse = scale.unaryExpr([](double s) { return s > 0.0 ? 1.0 / s : 0.0; });
  Eigen::MatrixXd rest = inverse.asDiagonal() * matrix * inverse.asDiagonal();
  Eigen::MatrixXd factor(n, n);
  Eigen::Index rank = 0;
  for (; rank < n; ++rank) {
    Eigen::Index pivot = 0;
    const double largest = rest.diagonal().maxCoeff(&pivot);
    if (!(largest > smallestPivot)) break;
    const Eigen::RowVectorXd row = rest.row(pivot) / std::sqrt(largest);
    rest.noalias() -= row.transpose() * row;
    rest.row(pivot).setZero();
    rest.col(pivot).setZero();
    factor.row(rank) = row.cwiseProduct(scale.transpose());
  }
  return factor.topRows(rank);
}

}  // namespace Velorn
