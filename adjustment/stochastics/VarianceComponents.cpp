// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/stochastics/VarianceComponents.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

namespace Velorn {
namespace {

constexpr double largestFactor = 100.0;

void check(double value, const char* name) {
  if (!(value >= 0.0 && std::isfinite(value))) {
    throw std::invalid_argument(fmt::format("varianceFactorOf: the {} is {}", name, value));
  }
}

}  // namespace

double VarianceFactor::standardDeviation() const {
  return std::sqrt(variance);
}

VarianceFactor varianceFactorOf(const ObservationGroup& group) {
  check(group.sumOfSquares, "sum of squares");
  check(group.effectiveCount, "effective count");
  check(group.trace, "trace");
  VarianceFactor factor;
  factor.redundancy = std::max(0.0, group.effectiveCount - group.trace);
  factor.isEstimated = factor.redundancy >= leastRedundancy;
  if (factor.isEstimated) {
    factor.variance =
        std::clamp(group.sumOfSquares / factor.redundancy, 1.0 / largestFactor, largestFactor);
  }
  return factor;
}

}  // namespace Velorn
