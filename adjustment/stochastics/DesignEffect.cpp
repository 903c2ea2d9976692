// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/stochastics/DesignEffect.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Velorn {
namespace {

struct Totals {
  double chunks = 0.0, count = 0.0, sum = 0.0, sumOfSquares = 0.0;
  double squaredCounts = 0.0, squaresOfMeans = 0.0;  ///< Σ n², Σ (Σ r)² / n
};

Totals totalsOf(std::span<const ChunkResiduals> chunks) {
  Totals totals;
  for (const auto& chunk : chunks) {
    if (chunk.count == 0) continue;
    const auto count = static_cast<double>(chunk.count);
    totals.chunks += 1.0;
    totals.count += count;
    totals.sum += chunk.sum;
    totals.sumOfSquares += chunk.sumOfSquares;
    totals.squaredCounts += count * count;
    totals.squaresOfMeans += chunk.sum * chunk.sum / count;
  }
  return totals;
}

/// Of at least two chunks, one of them with more than one residual. The variances between and
/// within chunks are those of single residuals where these are independent.
double intraclassCorrelation(const Totals& of) {
  const double between = (of.squaresOfMeans - of.sum * of.sum / of.count) / (of.chunks - 1.0);
  const double within = std::max(0.0, of.sumOfSquares - of.squaresOfMeans) / (of.count - of.chunks);
  const double size = (of.count - of.squaredCounts / of.count) / (of.chunks - 1.0);
  const double total = between + (size - 1.0) * within;
  return total > 0.0 ? std::clamp((between - within) / total, 0.0, 1.0) : 0.0;
}

}  // namespace

DesignEffect designEffectOf(std::span<const ChunkResiduals> chunks) {
  const Totals totals = totalsOf(chunks);
  if (!std::isfinite(totals.sumOfSquares + totals.squaresOfMeans)) {
    throw std::invalid_argument("designEffectOf: sums of residuals are not finite");
  }
  DesignEffect effect;
  if (totals.chunks < 1.0) return effect;
  if (totals.chunks < 2.0) {
    effect.intraclassCorrelation = 1.0;
  } else if (totals.count > totals.chunks) {
    effect.intraclassCorrelation = intraclassCorrelation(totals);
  }
  effect.factor = 1.0 + (totals.squaredCounts / totals.count - 1.0) * effect.intraclassCorrelation;
  effect.effectiveCount = totals.count / effect.factor;
  return effect;
}

}  // namespace Velorn
