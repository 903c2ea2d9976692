// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Counts of float values in bins of equal width.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/Visibility.h"

namespace OrvekStatistic {

/// n bins by their n + 1 edges. Bin i holds edges[i] <= value < edges[i + 1]; the last one holds
/// the value of its upper edge, too, so that the range is closed: [-2, 2] includes 2.
///
/// The edges are floats, as the values are. The float nearest to 0.06 is a little less than 0.06
/// and would fall below an edge kept in double; here it is that edge.
struct Bins {
  std::vector<float> edges;
  std::vector<std::uint64_t> counts;
  std::uint64_t below = 0;  ///< values less than the first edge
  std::uint64_t above = 0;  ///< values greater than the last edge
};

/// More bins than that are taken for a mistake.
inline constexpr std::size_t mostBins = 1'000'000;

/// Empty bins [lower + i binWidth, lower + (i + 1) binWidth) up to `upper`. Where the width does
/// not divide the range, the last bin is narrower.
/// @throws std::invalid_argument  naming the three values, when lower < upper or binWidth > 0 does
/// not hold, one of them is no finite float, there would be more than `mostBins`, or the width is
/// so small that neighbouring edges would be the same float
VELORN_PLATFORM_EXPORT Bins emptyBins(double lower, double upper, double binWidth);

/// Counts one value; NaN is not counted, an infinite one lies below or above.
VELORN_PLATFORM_EXPORT void countInto(Bins& bins, float value);

/// Values counted in the bins and beside them.
VELORN_PLATFORM_EXPORT std::uint64_t totalOf(const Bins& bins);

}  // namespace OrvekStatistic
