// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How far two strips lie apart, before any correspondence is known: the shift by which the relief
// of the one fits that of the other best.
//
//     const auto relief = reliefOf(HeightGrid(pointsOfI, side));
//     const auto shift = shiftBetween(relief, HeightGrid(pointsOfJ, side), reach);
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "flight/surfaces/CellTable.h"

namespace Velorn::Flights {

/// Mean heights in cells, and how far each rises above its surroundings. A tilted strip, or one at
/// another height, has the same relief.
class HeightGrid {
 public:
  /// @param points  [m]; those that have no place on Earth do not count
  /// @param side    of the cells, at least 1 mm [m]
  HeightGrid(std::span<const Geomra::PhysicalSpace::point> points, double side);

  struct Height {
    double sum = 0.0;
    std::size_t points = 0;
    float relief = 0.0F;  ///< above the mean of the cells about it [m]
    bool hasRelief = false;

    double mean() const { return sum / static_cast<double>(points); }
  };

  double side() const { return side_; }
  const CellTable<Height>& cells() const { return cells_; }

 private:
  void findRelief(const CellTable<Height>& heights);

  double side_;
  CellTable<Height> cells_;
};

struct ReliefCell {
  Cell cell;
  double height = 0.0, relief = 0.0;  ///< [m]
};

/// Cells that have relief, some thousand of all parts of the strip: far less than the grid, so that
/// those of many strips fit into memory.
std::vector<ReliefCell> reliefOf(const HeightGrid& grid);

/// Places of J minus those of I.
struct StripShift {
  double east = 0.0, north = 0.0, up = 0.0;  ///< [m]
  std::size_t cells = 0;                     ///< that were compared

  double length() const;
};

/// Tries all shifts by whole cells within the reach and takes the one of least mean difference in
/// relief, where great differences count alike (template matching by a truncated norm). No shift in
/// plan unless it differs clearly less than none does: level ground tells nothing. The shift in
/// height is the median difference of what then lies above each other.
/// @param i      of a grid with cells as large as those of J
/// @param reach  in east and north each [m]
/// @return nothing for strips that have too few cells in common where they lie: among all shifts
/// the
///         relief of other places is found, too
std::optional<StripShift> shiftBetween(std::span<const ReliefCell> i, const HeightGrid& j,
                                       double reach);

}  // namespace Velorn::Flights
