// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <Eigen/Core>
#include <cmath>
#include <random>
#include <stdexcept>

#include <gmock/gmock.h>

#include "adjustment/stochastics/DesignEffect.h"

using namespace Velorn;

namespace {

Eigen::Vector3d draw(double sigma, std::mt19937& random) {
  std::normal_distribution<double> normal;
  const double x = normal(random), y = normal(random), z = normal(random);
  return sigma * Eigen::Vector3d(x, y, z);
}

/// Distances of planes that face all ways, in chunks of 20 that are shifted together; the shift of
/// them all is estimated.
struct Shifted {
  ChunkScatter scatter;
  Eigen::Vector3d error;  // of the estimate

  Shifted(double common, std::mt19937& random) {
    constexpr std::size_t chunks = 100, size = 20;
    std::normal_distribution<double> noise;
    std::vector<Eigen::Matrix3d> normals(chunks, Eigen::Matrix3d::Zero());
    std::vector<Eigen::Vector3d> right(chunks, Eigen::Vector3d::Zero());
    Eigen::Matrix3d allNormals = Eigen::Matrix3d::Zero();
    Eigen::Vector3d all = Eigen::Vector3d::Zero();
    double squares = 0.0;
    for (std::size_t c = 0; c < chunks; ++c) {
      const Eigen::Vector3d shift = draw(common, random);
      for (std::size_t i = 0; i < size; ++i) {
        const Eigen::Vector3d normal = draw(1.0, random).normalized();
        const double distance = normal.dot(shift) + noise(random);
        normals[c] += normal * normal.transpose();
        right[c] += normal * distance;
        squares += distance * distance;
      }
      allNormals += normals[c];
      all += right[c];
    }
    error = allNormals.inverse() * all;
    scatter.count = chunks * size;
    scatter.squares = squares - error.dot(all);
    for (std::size_t c = 0; c < chunks; ++c) {
      scatter.gradients += (right[c] - normals[c] * error).squaredNorm();
      scatter.expectations += normals[c].trace();
    }
  }
};

}  // namespace

TEST(DesignEffect, IsTheFactorByWhichVariancesOfEstimatesGrow) {
  std::mt19937 random(11);
  constexpr int draws = 120;
  for (const double common : {0.0, 0.3, 1.0}) {
    double found = 0.0, squares = 0.0, variance = 0.0;
    for (int k = 0; k < draws; ++k) {
      const Shifted shifted(common, random);
      const DesignEffect effect = designEffectOf(shifted.scatter);
      const auto count = static_cast<double>(shifted.scatter.count);
      ASSERT_NEAR(effect.effectiveCount * effect.factor, count, 1e-9);
      found += effect.factor / draws;
      squares += shifted.error.squaredNorm() / draws;
      // Of n planes that face all ways N is n/3 times the unit matrix.
      variance += 9.0 / count * shifted.scatter.squares / count / draws;
    }
    // A variance of 360 draws scatters by 7 %.
    EXPECT_NEAR(squares / (variance * found), 1.0, 0.25) << common;
    EXPECT_NEAR(found, 1.0 + 19.0 * common * common / (3.0 + 3.0 * common * common), 0.4) << common;
  }
}

TEST(DesignEffect, IsOneWhereThereIsNothingToCompare) {
  EXPECT_EQ(designEffectOf({}).factor, 1.0);
  EXPECT_EQ(designEffectOf({5, 0.0, 0.0, 1.0}).effectiveCount, 5.0);
  EXPECT_EQ(designEffectOf({5, 5.0, 1.0, 10.0}).factor, 1.0) << "never less";
  EXPECT_THROW(designEffectOf({5, std::nan(""), 1.0, 1.0}), std::invalid_argument);
}
