// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Squares in plan, some of them chosen by chance: a part of a flight in which neighbours stay
// together.
#pragma once

#include <cstdint>

#include "flight/matching/Thinning.h"
#include "flight/surfaces/CellTable.h"

namespace Velorn::Flights {

class SampledSquares {
 public:
  /// @param oneOf  squares; 1: all of them
  SampledSquares(unsigned int oneOf, std::uint64_t seed) : oneOf_(oneOf), seed_(seed) {}

  /// @param place  within `farthestPlace`
  bool holds(const Geomra::PhysicalSpace::point& place) const {
    return oneOf_ <= 1 || isChosen(cellOf(place, side));
  }

  /// Whether any of the chosen squares may be within a distance [m].
  bool isNear(const Geomra::PhysicalSpace::point& place, double distance) const {
    if (oneOf_ <= 1) return true;
    const Cell low = cellOf({place.x - distance, place.y - distance, 0.0}, side);
    const Cell high = cellOf({place.x + distance, place.y + distance, 0.0}, side);
    for (Cell cell = low; cell.column <= high.column; ++cell.column) {
      for (cell.row = low.row; cell.row <= high.row; ++cell.row) {
        if (isChosen(cell)) return true;
      }
    }
    return false;
  }

 private:
  static constexpr double side = 20.0;  // [m]

  bool isChosen(const Cell& cell) const {
    return derivedSeed(seed_, static_cast<std::uint64_t>(cell.column),
                       static_cast<std::uint64_t>(cell.row)) %
               oneOf_ ==
           0;
  }

  unsigned int oneOf_;
  std::uint64_t seed_;
};

}  // namespace Velorn::Flights
