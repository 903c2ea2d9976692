// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How far points lie from where they should, by surface and by strip.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include <velorn/TerrainType.h>
#include <velorn/flight/Compare.h>

namespace Velorn::Flights::Comparison {

/// Gathers errors of points.
class WorldErrors {
 public:
  explicit WorldErrors(std::size_t strips) : cells_(strips) {}

  /// @param error  found minus true: east, north, height [m]; one that is not finite is only
  /// counted
  void add(std::size_t strip, Velorn::TerrainType kind, const Geomra::PhysicalSpace::vector& error);

  Geomra::PhysicalSpace::vector shift() const;  ///< mean error of all points [m]; NaN without any
  std::size_t notFinite() const { return notFinite_; }

  ErrorFigures all() const;
  ErrorFigures ofKind(Velorn::TerrainType kind) const;
  ErrorFigures ofStrip(std::size_t strip) const;

 private:
  struct Cell {
    Geomra::PhysicalSpace::vector sum{0, 0, 0};
    double horizontalSquares = 0.0, verticalSquares = 0.0;
    std::vector<float> horizontal, vertical;  // lengths
  };
  using Kinds = std::array<Cell, 6>;  // by TerrainType
  using Cells = std::vector<const Cell*>;

  ErrorFigures figuresOf(const Cells& cells) const;
  Cells everything() const;

  std::vector<Kinds> cells_;
  std::size_t notFinite_ = 0;
};

}  // namespace Velorn::Flights::Comparison
