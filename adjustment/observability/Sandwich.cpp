// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/observability/Sandwich.h"

#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

namespace Velorn {

std::vector<double> sandwichDeviations(const Cofactors& cofactors,
                                       std::span<const ChunkGradient> chunks,
                                       const NormalMatrix& prior,
                                       const std::vector<LinearSum>& sums) {
  if (chunks.size() < 2) {
    throw std::invalid_argument(
        fmt::format("sandwichDeviations: {} chunks, two are needed", chunks.size()));
  }
  const auto count = static_cast<double>(chunks.size());
  std::vector<double> deviations;
  deviations.reserve(sums.size());
  for (const auto& sum : sums) {
    const Eigen::VectorXd solved = cofactors.times(sum);
    double ofChunks = 0.0;
    for (const auto& chunk : chunks) {
      if (static_cast<Eigen::Index>(chunk.unknowns.size()) != chunk.gradient.size()) {
        throw std::invalid_argument(
            fmt::format("sandwichDeviations: a gradient of {} entries for {} unknowns",
                        chunk.gradient.size(), chunk.unknowns.size()));
      }
      const double product = chunk.gradient.dot(solved(chunk.unknowns));
      ofChunks += product * product;
    }
    const double ofPrior = solved.dot(prior * solved);
    deviations.push_back(std::sqrt(ofChunks * count / (count - 1.0) + ofPrior));
  }
  return deviations;
}

}  // namespace Velorn
