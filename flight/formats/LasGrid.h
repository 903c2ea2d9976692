// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The integers that stand for coordinates in a LAS file: coordinate = scale * integer + offset.
#pragma once

#include <cstdint>
#include <optional>

namespace Velorn::Flights {

/// One axis.
struct LasGrid {
  double scale = 0.001;  ///< [m], not 0
  double offset = 0.0;   ///< [m]

  double coordinate(std::int32_t number) const { return scale * number + offset; }
  /// The nearest number; none when 32 bits do not hold it, or for a coordinate that is not finite.
  std::optional<std::int32_t> number(double coordinate) const;
};

/// A grid of the same scale that holds all coordinates from `lowest` to `highest`, the given one if
/// it does: else one whose offset is the middle, on a multiple of a thousand scales.
/// @return none when no offset is good enough
std::optional<LasGrid> gridFor(double lowest, double highest, const LasGrid& given);

}  // namespace Velorn::Flights
