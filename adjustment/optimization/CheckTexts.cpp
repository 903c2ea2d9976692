// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/CheckTexts.h"

#include <numeric>

#include <fmt/format.h>

#include <velorn/TerrainType.h>

namespace Velorn {
namespace {

/// As a share of 1 / total in single precision; not finite for a total of 0.
double percentage(unsigned int count, std::uint64_t total) {
  const float share = static_cast<float>(count) * (1.0F / static_cast<float>(total));
  return static_cast<double>(share) * 100.0;
}

}  // namespace

std::string terrainHistogram(const std::vector<unsigned int>& counts,
                             const std::vector<double>& weights) {
  const auto total = std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
  const std::string rule = std::string(60, '-') + "\n";
  std::string text =
      fmt::format("{:>20}{:>10}{:>12}{:>10}\n", "Terrain Type", "Number", "Percentage", "Weight") +
      rule;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const auto weight = i < weights.size() ? fmt::format("{:g}", weights[i]) : "-";
    text +=
        fmt::format("{:>20}{:>10}{:>12g}{:>10}\n", terrainTypeToString(static_cast<TerrainType>(i)),
                    counts[i], percentage(counts[i], total), weight);
  }
  return text + rule + fmt::format("{:>20}{:>20}{:>12}\n", "Total:", total, "100.0");
}

}  // namespace Velorn
