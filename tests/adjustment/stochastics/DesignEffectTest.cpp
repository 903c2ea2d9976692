// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>

#include "adjustment/stochastics/DesignEffect.h"

using namespace Velorn;

namespace {

/// Chunks of 1 to 19 residuals about `mean`, of which any two have the given correlation; σ = 1.
std::vector<ChunkResiduals> chunksWith(double correlation, double mean, std::mt19937& random) {
  std::normal_distribution<double> normal;
  std::vector<ChunkResiduals> chunks(100);
  for (std::size_t c = 0; c < chunks.size(); ++c) {
    const double common = mean + std::sqrt(correlation) * normal(random);
    chunks[c].count = 1 + c % 19;
    for (std::size_t i = 0; i < chunks[c].count; ++i) {
      const double r = common + std::sqrt(1.0 - correlation) * normal(random);
      chunks[c].sum += r;
      chunks[c].sumOfSquares += r * r;
    }
  }
  return chunks;
}

}  // namespace

TEST(DesignEffect, IsTheFactorByWhichTheVarianceOfTheMeanGrows) {
  std::mt19937 random(11);
  constexpr int draws = 1000;
  for (const double correlation : {0.0, 0.1, 0.5}) {
    double ofMean = 0.0, factor = 0.0, found = 0.0, count = 0.0;
    for (int draw = 0; draw < draws; ++draw) {
      const auto chunks = chunksWith(correlation, 0.0, random);
      const DesignEffect effect = designEffectOf(chunks);
      double sum = 0.0;
      count = 0.0;
      for (const auto& chunk : chunks) {
        sum += chunk.sum;
        count += static_cast<double>(chunk.count);
      }
      ofMean += sum * sum / (count * count) / draws;
      factor += effect.factor / draws;
      found += effect.intraclassCorrelation / draws;
      ASSERT_NEAR(effect.effectiveCount * effect.factor, count, 1e-6);
    }
    EXPECT_NEAR(found, correlation, 0.01);
    // A variance of 1,000 draws scatters by sqrt(2 / 1000) = 4.5 %.
    EXPECT_NEAR(ofMean * count / factor, 1.0, 0.15) << correlation;
  }
}

TEST(DesignEffect, ACommonMeanIsNoCorrelationAndASingleChunkIsOneObservation) {
  std::mt19937 random(12);
  EXPECT_LT(designEffectOf(chunksWith(0.0, 5.0, random)).intraclassCorrelation, 0.05);
  const std::vector<ChunkResiduals> one{{40, 3.0, 55.0}, {0, 0.0, 0.0}}, single(30, {1, 0.3, 0.09});
  EXPECT_NEAR(designEffectOf(one).effectiveCount, 1.0, 1e-12);
  EXPECT_NEAR(designEffectOf(single).effectiveCount, 30.0, 1e-12);
  EXPECT_EQ(designEffectOf({}).effectiveCount, 0.0);
  const std::vector<ChunkResiduals> zero(5, {3, 0.0, 0.0}), bad{{2, std::nan(""), 1.0}};
  EXPECT_EQ(designEffectOf(zero).factor, 1.0);
  EXPECT_THROW(designEffectOf(bad), std::invalid_argument);
}
