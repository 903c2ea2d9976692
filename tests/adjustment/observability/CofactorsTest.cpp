// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>
#include <stdexcept>

#include <gmock/gmock.h>

#include "adjustment/observability/CheckChunks.h"
#include "adjustment/observability/Cofactors.h"
#include "adjustment/observability/SelectedInverse.h"
#include "tests/adjustment/observability/SmallAdjustment.h"

using namespace Velorn;

TEST(Cofactors, AreThoseOfTheDenseInverse) {
  const SmallAdjustment small(9, 60, 1);
  const Eigen::MatrixXd inverse = small.inverseDense(small.normalDense());
  const Cofactors cofactors(small.normal());
  const LinearSum sum = SmallAdjustment::sum(), other{{2, 1600.0}, {27, 1.0}};
  const Eigen::VectorXd f = small.dense(sum), g = small.dense(other);
  EXPECT_NEAR(cofactors.standardDeviation(sum), std::sqrt(f.dot(inverse * f)), 1e-7);
  EXPECT_TRUE(cofactors.times(sum).isApprox(inverse * f, 1e-7));
  const Eigen::MatrixXd covariance = cofactors.covariance({sum, other});
  EXPECT_NEAR(covariance(1, 0) / std::sqrt(covariance(0, 0) * covariance(1, 1)),
              f.dot(inverse * g) / std::sqrt(f.dot(inverse * f) * g.dot(inverse * g)), 1e-7);
  EXPECT_NEAR(correlationsOf(covariance)(0, 1),
              covariance(0, 1) / std::sqrt(covariance(0, 0) * covariance(1, 1)), 1e-12);
  EXPECT_EQ(cofactors.standardDeviation({{small.unknowns - 1, 1.0}}), 0.0) << "no unknown";
}

TEST(Cofactors, OfASingularMatrixTellWhatIsDeterminedAndWhatIsNot) {
  // Two sums of three unknowns are observed; the third has no size that matters.
  Eigen::MatrixXd rows(3, 3);
  rows << 1, 600, 0,  //
      2, 1200, 0,     //
      0, 0, 1e-5;
  NormalSum normal(3);
  normal.add({0, 1, 2}, rows.transpose() * rows);
  const Cofactors cofactors(normal.matrix());
  EXPECT_NEAR(cofactors.standardDeviation({{0, 1.0}, {1, 600.0}}), std::sqrt(0.2), 1e-6);
  EXPECT_NEAR(cofactors.standardDeviation({{2, 1.0}}), 1e5, 0.1);
  for (const LinearSum& free : {LinearSum{{0, 1.0}}, {{1, 1.0}}, {{0, 1.0}, {1, 599.0}}}) {
    EXPECT_EQ(cofactors.standardDeviation(free), std::numeric_limits<double>::infinity());
  }
  NormalSum cross(3);
  cross.add({0}, Eigen::MatrixXd::Ones(1, 1));
  EXPECT_NEAR(standardDeviationsWith(normal.matrix(), cross.matrix(), {{{0, 1.0}}})[0], 1.0, 1e-6);
}

TEST(Cofactors, ACandidateWithUnknownsOfItsOwnLowersDeviationsAsIfItWereThere) {
  const SmallAdjustment small(5, 16, 2);
  const Eigen::Index n = small.unknowns;
  Eigen::MatrixXd added = Eigen::MatrixXd::Zero(3, n + 1);
  added.col(0) << 3, 1, -2;
  added.col(4) << 100, -50, 70;
  added.col(n) << 1, 2, 1;
  const Eigen::MatrixXd candidate = added.transpose() * added;
  Eigen::MatrixXd whole = candidate;
  whole.topLeftCorner(n, n) += small.normalDense();
  whole(n - 1, n - 1) = 1.0;  // no unknown; its row is zero otherwise
  const Eigen::VectorXd f = small.dense(SmallAdjustment::sum());
  const double expected = std::sqrt(f.dot(whole.inverse().topLeftCorner(n, n) * f));
  const auto with =
      standardDeviationsWith(small.normal(), candidate.sparseView(), {SmallAdjustment::sum()});
  EXPECT_NEAR(with[0], expected, 1e-7);
  EXPECT_LT(with[0], 0.9 * Cofactors(small.normal()).standardDeviation(SmallAdjustment::sum()));
}

TEST(Cofactors, RefuseWhatIsNoNormalMatrix) {
  const auto matrixOf = [](double corner) -> NormalMatrix {
    return Eigen::MatrixXd{{1.0, corner}, {corner, 1.0}}.sparseView();
  };
  EXPECT_NO_THROW(Cofactors(matrixOf(1.0)));
  EXPECT_THROW(Cofactors(matrixOf(1.1)), std::invalid_argument);
  EXPECT_THROW(Cofactors(matrixOf(std::nan(""))), std::invalid_argument);
  EXPECT_THROW(Cofactors(NormalMatrix(2, 3)), std::invalid_argument);
  EXPECT_THROW(Cofactors(matrixOf(0.1)).times(LinearSum{{2, 1.0}}), std::invalid_argument);
  NormalSum sum(3);
  EXPECT_THROW(sum.add({0, 3}, Eigen::MatrixXd::Zero(2, 2)), std::invalid_argument);
  EXPECT_THROW(sum.add({0}, Eigen::MatrixXd::Zero(2, 2)), std::invalid_argument);
  EXPECT_THROW(sum.add({0}, Eigen::MatrixXd::Constant(1, 1, INFINITY)), std::invalid_argument);
}

TEST(SelectedInverse, HasTheEntriesOfTheDenseInverseAndSharesThatSumUp) {
  const SmallAdjustment small(30, 120, 3);
  const Eigen::MatrixXd inverse = small.inverseDense(small.normalDense());
  const Cofactors cofactors(small.normal());
  const SelectedInverse selected(cofactors);
  const NormalMatrix observed = small.observed(), prior = small.prior();
  for (Eigen::Index j = 0; j < observed.cols(); ++j) {
    for (NormalMatrix::InnerIterator entry(observed, j); entry; ++entry) {
      const double size = std::sqrt(inverse(j, j) * inverse(entry.row(), entry.row()));
      ASSERT_NEAR(selected.at(entry.row(), j), inverse(entry.row(), j), 1e-7 * size);
    }
  }
  EXPECT_TRUE(selected.diagonal().isApprox(inverse.diagonal(), 1e-7));
  const Eigen::VectorXd shares = selected.sharesOf(prior);
  EXPECT_TRUE(shares.isApprox((inverse * small.priorDense()).diagonal(), 1e-6));
  const auto known = static_cast<double>(small.unknowns - 1);
  EXPECT_NEAR(selected.traceWith(observed) + selected.traceWith(prior), known, 1e-6);
  // Sections 0 and 29 share globals alone, and the factor has not filled in between all of them.
  const NormalMatrix far = Eigen::MatrixXd::Ones(small.unknowns, small.unknowns).sparseView();
  EXPECT_THROW(selected.traceWith(far), std::invalid_argument);
  const NormalMatrix withPlaces = small.normal() + 0.0 * far;
  EXPECT_NEAR(SelectedInverse(Cofactors(withPlaces)).at(1, 80), inverse(1, 80), 1e-8);
}

TEST(Cofactors, TellTheErrorsOfAThousandAdjustmentsAndOfWhatWasHeldOut) {
  const SmallAdjustment small(5, 24, 4);
  const Cofactors cofactors(small.normal());
  const SelectedInverse selected(cofactors);
  const Eigen::MatrixXd inverse = small.inverseDense(small.normalDense());
  const SmallAdjustment held(5, 8, 5);  // other chunks of the same sections
  const double trace = selected.traceWith(held.observed()),
               count = static_cast<double>(held.a.rows());
  std::mt19937 random(6);
  constexpr int draws = 1000;
  const std::vector<LinearSum> sums{SmallAdjustment::sum(), {{15, 1.0}}, {{2, 1.0}}};
  std::vector<double> squares(sums.size(), 0.0);
  double excess = 0.0, squaredExcess = 0.0;
  for (int draw = 0; draw < draws; ++draw) {
    const Eigen::VectorXd error = small.drawnUnknowns(random);  // of what was known before
    const Eigen::VectorXd noise = SmallAdjustment::drawn(small.a.rows(), random);
    const Eigen::VectorXd x = inverse * (small.a.transpose() * noise + small.priorDense() * error);
    for (std::size_t k = 0; k < sums.size(); ++k) {
      const double normalised = valueOf(sums[k], x) / cofactors.standardDeviation(sums[k]);
      squares[k] += normalised * normalised / draws;
    }
    const Eigen::VectorXd r = held.a * x - SmallAdjustment::drawn(held.a.rows(), random);
    const CheckFigures figures = checkFiguresOf({count, count, r.squaredNorm(), trace});
    excess += figures.excess() / draws;
    squaredExcess += figures.excess() * figures.excess() / draws;
  }
  const auto [lowest, highest] = chiSquareLimits(draws);
  for (const double square : squares) {
    EXPECT_GT(square, lowest);
    EXPECT_LT(square, highest);
  }
  EXPECT_NEAR(excess, 0.0, 0.25) << "a root of squares lies a little below the root of its mean";
  EXPECT_NEAR(squaredExcess, 1.0, 0.4) << "sigma is that of the noise alone";
  EXPECT_THROW(checkFiguresOf({0.0, 1.0, 1.0, 0.0}), std::invalid_argument);
}
