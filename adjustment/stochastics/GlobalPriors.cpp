// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/stochastics/GlobalPriors.h"

#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

#include "adjustment/model/Layout.h"

namespace Velorn {
PriorRows globalPriorRows(const std::array<double, 3>& sigmas,
                          const std::array<double, 3>& delivered, Eigen::Index firstUnknown) {
  std::vector<LinearSum> sums;
  std::vector<double> expected;
  for (std::size_t i = 0; i < sigmas.size(); ++i) {
    if (!(sigmas[i] > 0.0)) {
      throw std::invalid_argument(
          fmt::format("globalPriorRows: entry {}: the standard deviation is {}", i, sigmas[i]));
    }
    if (std::isinf(sigmas[i])) continue;
    if (!std::isfinite(delivered[i])) {
      throw std::invalid_argument(
          fmt::format("globalPriorRows: entry {}: the delivered value is {}", i, delivered[i]));
    }
    sums.push_back({{firstUnknown + static_cast<Eigen::Index>(i), 1.0 / sigmas[i]}});
    expected.push_back(delivered[i] / sigmas[i]);
  }
  PriorRows prior = rowsOf(sums);
  for (std::size_t i = 0; i < expected.size(); ++i) {
    prior.expected[static_cast<Eigen::Index>(i)] = expected[i];
  }
  return prior;
}

Eigen::Index firstUnknownOf(GlobalBlock block, std::size_t sections) {
  return static_cast<Eigen::Index>(localParameters * sections) +
         3 * static_cast<Eigen::Index>(block);
}

}  // namespace Velorn
