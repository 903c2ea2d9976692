// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How far the points of one strip moved, as counts in bins. Pure functions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Velorn {

/// Bin i counts movements in [lower + i binWidth, lower + (i + 1) binWidth) [m].
struct MovementHistogram {
  static constexpr double lower = 0.0, upper = 4.0, binWidth = 0.1;
  static constexpr std::size_t binCount = 40;

  std::array<std::uint64_t, binCount> counts{};
  std::uint64_t total = 0;      ///< of the bins
  std::uint64_t beyond = 0;     ///< in no bin: `upper` and more
  std::uint64_t notFinite = 0;  ///< in no bin: NaN and infinite
};

/// Counts one movement in its bin, trunc((movement - lower) / binWidth), or beside the bins.
/// @param movement  0 or more [m]
void countInto(MovementHistogram& histogram, double movement);

/// Lower edge of the first bin up to which the bins hold floor(share total) movements: with one
/// movement in each of the first ten bins and the share 0.9, that of bin 8. Movements in no bin do
/// not enter it.
/// @param share  in [0, 1]
/// @return       [m]; 0 for a histogram without counts, and where floor(share total) is 0
double quantile(const MovementHistogram& histogram, double share);

}  // namespace Velorn
