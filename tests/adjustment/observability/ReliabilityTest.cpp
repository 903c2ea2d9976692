// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <stdexcept>

#include <gmock/gmock.h>

#include "adjustment/observability/Reliability.h"
#include "tests/adjustment/observability/SmallAdjustment.h"

using namespace Velorn;

namespace {

/// The adjustment with a disturbance of its chunk 2, which acts on two of five observations.
class ReliabilityOfAChunk : public testing::Test {
 protected:
  static constexpr Eigen::Index chunk = 2;

  ReliabilityOfAChunk() {
    z.setZero(small.a.rows());
    z[SmallAdjustment::perChunk * chunk] = 0.8;
    z[SmallAdjustment::perChunk * chunk + 3] = 1.1;
  }

  DisturbanceColumn columnOf(const Eigen::VectorXd& r) const {
    DisturbanceColumn column{{}, z.squaredNorm(), z.dot(r)};
    const Eigen::VectorXd b = small.a.transpose() * z;
    for (const auto unknown : small.unknownsOf(chunk)) column.products[unknown] = b[unknown];
    return column;
  }

  Eigen::VectorXd adjusted(const Eigen::VectorXd& y, const Eigen::VectorXd& delivered) const {
    return inverse * (small.a.transpose() * y + small.priorDense() * delivered);
  }

  const SmallAdjustment small{5, 20, 1};
  const Cofactors cofactors{small.normal()};
  const Eigen::MatrixXd inverse = small.inverseDense(small.normalDense());
  Eigen::VectorXd z;
};

}  // namespace

TEST_F(ReliabilityOfAChunk, IsThatOfAnAdjustmentWithTheDisturbanceAsAnUnknown) {
  std::mt19937 random(2);
  const Eigen::VectorXd y = SmallAdjustment::drawn(small.a.rows(), random);
  const Eigen::VectorXd x = adjusted(y, small.drawnUnknowns(random));
  const Disturbance found = disturbanceOf(cofactors, columnOf(small.a * x - y));

  const Eigen::Index n = small.unknowns - 1;  // the last is none
  Eigen::MatrixXd bordered(n + 1, n + 1);
  const Eigen::VectorXd b = small.a.transpose() * z;
  bordered.topLeftCorner(n, n) = small.normalDense().topLeftCorner(n, n);
  bordered.col(n).head(n) = bordered.row(n).head(n) = b.head(n);
  bordered(n, n) = z.squaredNorm();
  Eigen::VectorXd right = Eigen::VectorXd::Zero(n + 1);
  right[n] = -z.dot(small.a * x - y);
  const Eigen::VectorXd step = bordered.inverse() * right;  // what corrects it
  EXPECT_NEAR(found.value, -step[n], 1e-6);
  EXPECT_NEAR(found.sigma(), std::sqrt(bordered.inverse()(n, n)), 1e-6);
  EXPECT_NEAR(found.test(), found.value / found.sigma(), 1e-12);
  EXPECT_NEAR(found.minimalDetectable(), 4.13 * found.sigma(), 1e-9);

  // As a further unknown it takes back what it had moved.
  EXPECT_TRUE((found.value * found.influence).head(n).isApprox(-step.head(n), 1e-5));

  // A solver that stopped before the minimum changes nothing of it.
  const Eigen::VectorXd early = x + 0.01 * small.drawnUnknowns(random);
  const Eigen::VectorXd r = small.a * early - y;
  const Eigen::VectorXd gradient = small.normalDense() * (early - x);
  EXPECT_NEAR(disturbanceOf(cofactors, columnOf(r), gradient).value, found.value, 1e-6);
  EXPECT_GT(std::abs(disturbanceOf(cofactors, columnOf(r)).value - found.value), 1e-4);
}

TEST_F(ReliabilityOfAChunk,
       TheTestIsNormalWithoutADisturbanceAndFindsTheDetectableOneInEightOfTen) {
  std::mt19937 random(3);
  constexpr int draws = 1000;
  double square = 0.0, mean = 0.0;
  int found = 0;
  for (int draw = 0; draw < draws; ++draw) {
    const Eigen::VectorXd delivered = small.drawnUnknowns(random);
    Eigen::VectorXd y = SmallAdjustment::drawn(small.a.rows(), random);
    const Disturbance none =
        disturbanceOf(cofactors, columnOf(small.a * adjusted(y, delivered) - y));
    square += none.test() * none.test() / draws;
    y -= none.minimalDetectable() * z;  // residuals grow by it
    const Disturbance some =
        disturbanceOf(cofactors, columnOf(small.a * adjusted(y, delivered) - y));
    mean += some.value / none.minimalDetectable() / draws;
    found += std::abs(some.test()) > 3.29 ? 1 : 0;
  }
  const auto [lowest, highest] = chiSquareLimits(draws);
  EXPECT_GT(square, lowest);
  EXPECT_LT(square, highest);
  EXPECT_NEAR(mean, 1.0, 0.03);
  EXPECT_NEAR(found, 800, 50) << "a binomial of 1,000 scatters by 13";
}

TEST_F(ReliabilityOfAChunk, WhatTheUnknownsTakeWhollyIsNotTestable) {
  Eigen::MatrixXd observed{{1.0, 1.0}, {1.0, -1.0}};
  NormalSum normal(2);
  normal.add({0, 1}, observed.transpose() * observed);
  const Disturbance patch =
      disturbanceOf(Cofactors(normal.matrix()), {{{0, 1.0}, {1, 1.0}}, 1.0, 0.3});
  EXPECT_FALSE(patch.isTestable());
  EXPECT_TRUE(std::isnan(patch.value));
  EXPECT_TRUE(std::isinf(patch.minimalDetectable()));
  EXPECT_THROW(disturbanceOf(cofactors, columnOf(z), Eigen::VectorXd::Zero(3)),
               std::invalid_argument);
}

TEST_F(ReliabilityOfAChunk, LeavingTheGroupOutIsAnAdjustmentOfAllOthers) {
  std::mt19937 random(4);
  const Eigen::VectorXd y = 3.0 * SmallAdjustment::drawn(small.a.rows(), random);
  const Eigen::VectorXd delivered = small.drawnUnknowns(random);
  const Eigen::VectorXd early = adjusted(y, delivered) + 0.01 * small.drawnUnknowns(random);
  const Eigen::VectorXd r = small.a * early - y;
  const auto places = small.unknownsOf(chunk);
  const Eigen::MatrixXd rows = small.rowsOf(chunk)(Eigen::all, places);
  ObservationSums group{
      places, rows.transpose() * rows,
      rows.transpose() * r.segment(SmallAdjustment::perChunk * chunk, SmallAdjustment::perChunk),
      columnOf(r)};
  const Eigen::VectorXd gradient =
      small.a.transpose() * r + small.priorDense() * (early - delivered);
  const Prediction prediction = predictionWithout(cofactors, group, gradient);

  Eigen::VectorXd weights = Eigen::VectorXd::Ones(small.a.rows());
  weights.segment(SmallAdjustment::perChunk * chunk, SmallAdjustment::perChunk).setZero();
  const Eigen::MatrixXd others =
      small.inverseDense(small.a.transpose() * weights.asDiagonal() * small.a + small.priorDense());
  const Eigen::VectorXd without =
      others * (small.a.transpose() * weights.asDiagonal() * y + small.priorDense() * delivered);
  ASSERT_TRUE(prediction.isDetermined);
  EXPECT_TRUE(prediction.change.isApprox(without - early, 1e-5));
  const double square = z.squaredNorm();
  EXPECT_NEAR(prediction.misfit, z.dot(small.a * without - y) / square, 1e-5);
  const Eigen::VectorXd b = small.a.transpose() * z;
  EXPECT_NEAR(prediction.sigma, std::sqrt(1.0 / square + b.dot(others * b) / (square * square)),
              1e-5);

  group.disturbance.products[12] = 1.0;  // an unknown of another section
  EXPECT_THROW(predictionWithout(cofactors, group), std::invalid_argument);
  group.gradient.resize(2);
  EXPECT_THROW(predictionWithout(cofactors, group), std::invalid_argument);
}

TEST(Reliability, AGroupThatAloneDeterminesSomethingIsNotPredicted) {
  NormalSum normal(2);
  normal.add({0}, 5.0 * Eigen::MatrixXd::Identity(1, 1));
  const Eigen::MatrixXd alone{{1.0, 2.0}, {2.0, 4.0}};
  normal.add({0, 1}, alone);
  const Prediction prediction = predictionWithout(
      Cofactors(normal.matrix()),
      {{0, 1}, alone, Eigen::Vector2d(0.1, 0.2), {{{0, 1.0}, {1, 2.0}}, 1.0, 0.1}});
  EXPECT_FALSE(prediction.isDetermined);
  EXPECT_TRUE(std::isnan(prediction.misfit));
  EXPECT_TRUE(std::isinf(prediction.sigma));
}
