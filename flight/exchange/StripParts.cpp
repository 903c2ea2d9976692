// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/StripParts.h"

#include <algorithm>
#include <numeric>
#include <tuple>

namespace Velorn::Flights {

std::vector<StripPart> stripParts(std::span<const GpsTime> times,
                                  std::span<const std::uint16_t> sourceIds, double gap) {
  std::vector<std::uint64_t> order(times.size());
  std::iota(order.begin(), order.end(), std::uint64_t{0});
  const auto keyOf = [&](std::uint64_t k) {
    return std::tuple(sourceIds[k], times[k].week, times[k].seconds, k);
  };
  std::sort(order.begin(), order.end(), [&](auto a, auto b) { return keyOf(a) < keyOf(b); });
  std::vector<StripPart> parts;
  for (std::size_t at = 0; at < order.size(); ++at) {
    const std::uint64_t k = order[at];
    const auto& [week, seconds] = times[k];
    const bool isNew = parts.empty() || parts.back().sourceId != sourceIds[k] ||
                       parts.back().week != week || seconds - times[order[at - 1]].seconds > gap;
    if (isNew) parts.push_back({week, sourceIds[k], {}});
    parts.back().order.push_back(k);
  }
  return parts;
}

}  // namespace Velorn::Flights
