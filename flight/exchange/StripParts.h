// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A file of points may hold several strips.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "flight/exchange/GpsTimes.h"

namespace Velorn::Flights {

/// One strip of a file.
struct StripPart {
  std::int64_t week = 0;
  std::uint16_t sourceId = 0;
  std::vector<std::uint64_t> order;  ///< numbers of its points in the file, in order of time
};

/// Strips by point source id, by GPS week, and wherever no point was measured for longer than
/// `gap`. Points of one time stay in the order of the file.
/// @param gap  [s]
/// @return in order of source id and time
std::vector<StripPart> stripParts(std::span<const GpsTime> times,
                                  std::span<const std::uint16_t> sourceIds, double gap);

}  // namespace Velorn::Flights
