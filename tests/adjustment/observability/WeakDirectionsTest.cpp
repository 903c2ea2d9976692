// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <gmock/gmock.h>

#include "adjustment/observability/WeakDirections.h"
#include "tests/adjustment/observability/SmallAdjustment.h"

using namespace Velorn;

TEST(WeakDirections, AreThoseOfTheDenseEigenvectors) {
  SmallAdjustment small(20, 160, 1);
  // In units of what was known before, the first coefficients of all sections together are just
  // what the first global unknown is, the second ones nearly what the second is.
  for (Eigen::Index m = 0; m < 2; ++m) {
    small.a.col(60 + m).setZero();
    for (Eigen::Index s = 0; s < small.sections; ++s) {
      small.a.col(60 + m) -= small.a.col(3 * s + m);
    }
    small.priorSigma[60 + m] = small.priorSigma[m];
  }
  std::mt19937 random(2);
  small.a.col(61) += SmallAdjustment::drawn(small.a.rows(), random);
  small.a.col(2) *= 0.3;
  small.priorSigma[5] = 0.0;  // held
  const NormalMatrix observed = small.observed();
  const auto weak = weakDirections(observed, small.priorSigma, 5);

  std::vector<Eigen::Index> free;
  for (Eigen::Index i = 0; i < small.unknowns; ++i) {
    if (small.priorSigma[i] > 0.0) free.push_back(i);
  }
  const Eigen::MatrixXd scaled =
      small.priorSigma.asDiagonal() * Eigen::MatrixXd(observed) * small.priorSigma.asDiagonal();
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> dense(scaled(free, free));
  Eigen::Index below = 0;
  while (dense.eigenvalues()[below] < 1.0) ++below;
  ASSERT_GE(below, 3);
  ASSERT_EQ(weak.size(), static_cast<std::size_t>(std::min<Eigen::Index>(5, below)));
  for (std::size_t k = 0; k < weak.size(); ++k) {
    const auto column = static_cast<Eigen::Index>(k);
    EXPECT_NEAR(weak[k].eigenvalue, dense.eigenvalues()[column], 1e-6);
    EXPECT_NEAR(std::abs(weak[k].direction(free).dot(dense.eigenvectors().col(column))), 1.0, 1e-4);
    EXPECT_NEAR(weak[k].direction[5], 0.0, 1e-9);
  }
}

TEST(WeakDirections, AreNoneWhereTheFlightTellsMoreAndAllWhereItTellsNothing) {
  const SmallAdjustment small(4, 60, 3);
  EXPECT_TRUE(weakDirections(small.observed(), small.priorSigma, 5).empty());
  const Eigen::VectorXd ones = Eigen::VectorXd::Ones(4);
  EXPECT_EQ(weakDirections(NormalMatrix(4, 4), ones, 9).size(), 4U);
  EXPECT_TRUE(weakDirections(NormalMatrix(0, 0), {}, 9).empty());
  EXPECT_THROW(weakDirections(NormalMatrix(4, 4), Eigen::VectorXd::Ones(3), 2),
               std::invalid_argument);
  EXPECT_THROW(weakDirections(NormalMatrix(4, 4), -ones, 2), std::invalid_argument);
}

TEST(WeakDirections, AreToldByKindsOfUnknownsWithTheirSigns) {
  Eigen::VectorXd direction = Eigen::VectorXd::Zero(3 * 24 + 12);
  for (Eigen::Index s = 0; s < 3; ++s) direction[24 * s + 16] = -0.4;  // pitch of all sections
  direction[3 * 24 + 7] = 0.7;                                         // misalignment pitch
  direction[24 + 3] = 0.01;
  const auto parts = participations(direction);
  ASSERT_EQ(parts.size(), 2U);
  EXPECT_EQ(parts[0].kind, 24U + 7U);
  EXPECT_NEAR(parts[0].share, 0.49, 1e-12);
  EXPECT_EQ(parts[1].kind, 16U);
  EXPECT_NEAR(parts[1].share, 0.48, 1e-12);
  EXPECT_NEAR(parts[1].mean, -0.4, 1e-12);
}
