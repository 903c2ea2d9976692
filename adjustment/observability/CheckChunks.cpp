// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/observability/CheckChunks.h"

#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

namespace Velorn {
namespace {

void check(bool isRight, const char* name, double value) {
  if (!isRight || !std::isfinite(value)) {
    throw std::invalid_argument(fmt::format("checkFiguresOf: the {} is {}", name, value));
  }
}

}  // namespace

CheckFigures checkFiguresOf(const CheckSums& sums) {
  check(sums.count > 0.0, "count", sums.count);
  check(sums.effectiveCount > 0.0, "effective count", sums.effectiveCount);
  check(sums.sumOfSquares >= 0.0, "sum of squares", sums.sumOfSquares);
  check(sums.trace >= 0.0, "trace", sums.trace);
  CheckFigures figures;
  figures.rms = std::sqrt(sums.sumOfSquares / sums.count);
  figures.predicted = std::sqrt(1.0 + sums.trace / sums.count);
  figures.sigma = figures.predicted / std::sqrt(2.0 * sums.effectiveCount);
  return figures;
}

}  // namespace Velorn
