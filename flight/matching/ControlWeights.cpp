// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/ControlWeights.h"

#include <algorithm>
#include <cmath>

namespace Velorn::Flights {

double controlSpread(std::span<const double> misfits, double ofPairs) {
  constexpr double least = 0.01, quartile = 1.1503;  // [m], of the normal distribution's |x|
  std::vector<double> amounts;
  for (const double misfit : misfits) {
    if (std::isfinite(misfit)) amounts.push_back(std::abs(misfit));
  }
  double spread = std::isfinite(ofPairs) ? std::max(least, ofPairs) : least;
  if (amounts.empty()) return spread;
  // The rank is rounded up: of three patches none can be told from the others.
  const std::size_t rank = (3 * amounts.size() + 3) / 4 - 1;
  const auto place = amounts.begin() + static_cast<std::ptrdiff_t>(rank);
  std::nth_element(amounts.begin(), place, amounts.end());
  return std::max(spread, *place / quartile);
}

double controlWeight(double misfit, double spread) {
  constexpr double width = 3.0;
  const double ratio = width * spread / std::abs(misfit);
  if (!(ratio < 1.0)) return 1.0;
  return std::max(leastControlWeight, ratio * ratio);
}

void weigh(std::vector<ControlItem>& items, double disagreement) {
  constexpr double normalised = 1.4826;  // from the median of |x| to a standard deviation
  std::vector<double> misfits;
  misfits.reserve(items.size());
  for (const ControlItem& item : items) misfits.push_back(item.misfit);
  const double spread = controlSpread(misfits, normalised * disagreement);
  for (ControlItem& item : items) item.weight = controlWeight(item.misfit, spread);
}

}  // namespace Velorn::Flights
