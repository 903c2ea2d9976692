// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <stdexcept>

#include <gmock/gmock.h>

#include "adjustment/observability/Sandwich.h"
#include "tests/adjustment/observability/SmallAdjustment.h"

using namespace Velorn;

TEST(Sandwich, SeesCorrelationWithinChunksThatCofactorsDoNotKnow) {
  const SmallAdjustment small(4, 300, 7);
  const Cofactors cofactors(small.normal());
  const Eigen::MatrixXd inverse = small.inverseDense(small.normalDense());
  const std::vector<LinearSum> sums{{{12, 1.0}}, SmallAdjustment::sum()};
  // Errors of a chunk that its unknowns could explain are the ones that matter.
  constexpr double common = 3.0;
  std::mt19937 random(8);
  constexpr int draws = 300;
  Eigen::Vector2d variances = Eigen::Vector2d::Zero(), told = Eigen::Vector2d::Zero();
  for (int draw = 0; draw < draws; ++draw) {
    Eigen::VectorXd y = SmallAdjustment::drawn(small.a.rows(), random);
    for (Eigen::Index c = 0; c < small.chunks(); ++c) {
      const auto rows = small.rowsOf(c).leftCols(13);
      y.segment(SmallAdjustment::perChunk * c, SmallAdjustment::perChunk) +=
          common * (rows.col(12) + rows.col(0)) * SmallAdjustment::drawn(1, random)[0];
    }
    const Eigen::VectorXd x =
        inverse * (small.a.transpose() * y + small.priorDense() * small.drawnUnknowns(random));
    std::vector<ChunkGradient> chunks;
    for (Eigen::Index c = 0; c < small.chunks(); ++c) {
      const auto places = small.unknownsOf(c);
      const auto rows = small.rowsOf(c);
      const Eigen::VectorXd r =
          rows * x - y.segment(SmallAdjustment::perChunk * c, SmallAdjustment::perChunk);
      chunks.push_back({places, rows(Eigen::all, places).transpose() * r});
    }
    const auto deviations = sandwichDeviations(cofactors, chunks, small.prior(), sums);
    for (int k = 0; k < 2; ++k) {
      const double error = valueOf(sums[static_cast<std::size_t>(k)], x);
      variances[k] += error * error / draws;
      told[k] += std::pow(deviations[static_cast<std::size_t>(k)], 2) / draws;
    }
  }
  for (int k = 0; k < 2; ++k) {
    EXPECT_NEAR(told[k] / variances[k], 1.0, 0.25) << k;  // 300 draws scatter by 8 %
    EXPECT_GT(variances[k],
              4.0 * std::pow(cofactors.standardDeviation(sums[static_cast<std::size_t>(k)]), 2));
  }
  EXPECT_THROW(sandwichDeviations(cofactors, {}, small.prior(), sums), std::invalid_argument);
}
