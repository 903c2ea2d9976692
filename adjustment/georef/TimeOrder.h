// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Points that do not stand in order of time, through an index that does.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "adjustment/georef/FrameKernel.h"

namespace Velorn {

/// Whether many times are below the one before; of a long list some places are looked at.
bool isOutOfOrder(const double* times, std::size_t count);

/// Numbers of the times in rising order. Times that differ by less than a 4e9th of their range, and
/// those that are not finite, stand in any order.
/// @param count  below 2^32
std::vector<std::uint32_t> orderOfTimes(const double* times, std::size_t count);

/// Points of a batch by their numbers, in arrays of their own.
class GatheredPoints {
 public:
  static constexpr std::size_t most = 512;  // some 40 kB, for the processor's cache

  /// @param numbers  of points of the batch, `count` of them, at most `most`
  GatheredPoints(const PointBatch& from, const std::uint32_t* numbers, std::size_t count);

  PointBatch batch();

  /// Puts results and directions where the points came from.
  void returnResults();

 private:
  const PointBatch& from_;
  const std::uint32_t* numbers_;
  std::size_t count_;
  double points_[3 * most], times_[most], results_[3 * most], directions_[3 * most];
};

/// Calls `serve` with batches that together are all of this one: it itself where it is in order of
/// time, else pieces that are.
template <typename Serve>
void inOrderOfTime(const PointBatch& batch, const Serve& serve) {
  constexpr std::size_t most = std::size_t{1} << 21U;  // indexed at once, in 42 MB
  for (std::size_t first = 0; first < batch.count; first += most) {
    const PointBatch slice = partOf(batch, first, std::min(first + most, batch.count));
    if (!isOutOfOrder(slice.times, slice.count)) {
      serve(slice);
      continue;
    }
    const auto order = orderOfTimes(slice.times, slice.count);
    for (std::size_t k = 0; k < order.size(); k += GatheredPoints::most) {
      GatheredPoints gathered(slice, &order[k], std::min(GatheredPoints::most, order.size() - k));
      serve(gathered.batch());
      gathered.returnResults();
    }
  }
}

}  // namespace Velorn
