// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>
#include <stdexcept>

#include <gmock/gmock.h>

#include "adjustment/stochastics/GlobalPriors.h"

using namespace Velorn;

TEST(GlobalPriors, CountTheDistanceFromWhatWasDeliveredInStandardDeviations) {
  const double free = std::numeric_limits<double>::infinity();
  const PriorRows rows = globalPriorRows({0.02, free, 0.1}, {0.5, std::nan(""), -0.3}, 51);
  EXPECT_THAT(rows.unknowns, testing::ElementsAre(51, 53));
  Eigen::VectorXd x = Eigen::VectorXd::Zero(60);
  x[51] = 0.54;
  x[52] = 1000.0;
  x[53] = -0.35;
  EXPECT_TRUE(rows.residuals(x).isApprox(Eigen::Vector2d(2.0, -0.5), 1e-12));
  EXPECT_EQ(globalPriorRows({free, free, free}, {0, 0, 0}, 51).rows.rows(), 0);
  for (const double bad : {0.0, -1.0, std::nan("")}) {
    EXPECT_THROW(globalPriorRows({1.0, bad, 1.0}, {0, 0, 0}, 51), std::invalid_argument) << bad;
  }
  EXPECT_THROW(globalPriorRows({1.0, 1.0, 1.0}, {0, free, 0}, 51), std::invalid_argument);
}

TEST(GlobalPriors, BlocksAreThoseOfTheVectorOfUnknowns) {
  EXPECT_EQ(firstUnknownOf(GlobalBlock::Offsets, 5), 120);
  EXPECT_EQ(firstUnknownOf(GlobalBlock::LeverArm, 5), 129);
}
