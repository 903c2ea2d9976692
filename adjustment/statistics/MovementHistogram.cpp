// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/statistics/MovementHistogram.h"

#include <cmath>

namespace Velorn {

void countInto(MovementHistogram& histogram, double movement) {
  constexpr auto bins = static_cast<double>(MovementHistogram::binCount);
  const double place = (movement - MovementHistogram::lower) / MovementHistogram::binWidth;
  if (!std::isfinite(movement)) {
    ++histogram.notFinite;
  } else if (place >= bins) {  // compared before it becomes an integer, which may not hold it
    ++histogram.beyond;
  } else {
    ++histogram.counts[static_cast<std::size_t>(place)];
    ++histogram.total;
  }
}

double quantile(const MovementHistogram& histogram, double share) {
  const auto threshold = static_cast<std::uint64_t>(static_cast<double>(histogram.total) * share);
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < MovementHistogram::binCount; ++i) {
    sum += histogram.counts[i];
    if (sum >= threshold) return static_cast<double>(i) * MovementHistogram::binWidth;
  }
  return 0.0;
}

}  // namespace Velorn
