// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "adjustment/engine/PivotedFactor.h"

namespace {

/// Columns of very different sizes, the last one the sum of two others.
Eigen::MatrixXd dependentColumns(Eigen::Index rows) {
  std::srand(5);
  Eigen::MatrixXd a = Eigen::MatrixXd::Random(rows, 7);
  a.col(1) *= 1e-7;
  a.col(2) *= 1e6;
  a.col(4).setZero();
  a.col(6) = a.col(0) + a.col(3);
  return a;
}

}  // namespace

TEST(PivotedFactor, GivesASingularMatrixBackToRounding) {
  const Eigen::MatrixXd a = dependentColumns(40), matrix = a.transpose() * a;
  const Eigen::MatrixXd factor = Velorn::pivotedFactor(matrix);
  EXPECT_EQ(factor.rows(), 5) << "seven columns, of which one is zero and one a sum";
  const Eigen::MatrixXd product = factor.transpose() * factor;
  for (Eigen::Index i = 0; i < 7; ++i) {
    for (Eigen::Index j = 0; j < 7; ++j) {
      EXPECT_NEAR(product(i, j), matrix(i, j), 1e-14 * std::sqrt(matrix(i, i) * matrix(j, j)))
          << i << " " << j;
    }
  }
  EXPECT_EQ(factor.col(4), Eigen::VectorXd::Zero(5));
}

TEST(PivotedFactor, HasNoMoreRowsThanThereWereAndNoneOfNothing) {
  const Eigen::MatrixXd a = dependentColumns(3);
  EXPECT_EQ(Velorn::pivotedFactor(a.transpose() * a).rows(), 3);
  EXPECT_EQ(Velorn::pivotedFactor(Eigen::MatrixXd::Zero(4, 4)).rows(), 0);
}
