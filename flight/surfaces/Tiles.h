// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Points of a cloud in square tiles of the plan, each with the points that lie about it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "flight/surfaces/CellTable.h"

namespace Velorn::Flights {

using Geomra::PhysicalSpace::point;

/// Every place within a radius of a point that a tile owns is among the tile's points, its own ones
/// and those about it. The tiles hang on the points alone, and grow with their spacing.
class Tiles {
 public:
  /// @param points   all points; those that `members` names are within `farthestPlace`
  /// @param members  numbers of the points of the cloud
  /// @param radius   [m]
  Tiles(std::span<const point> points, std::span<const std::uint32_t> members, double radius);

  std::size_t size() const { return starts_.size() - 1; }
  /// Numbers of the points that belong to a tile.
  std::span<const std::uint32_t> own(std::size_t tile) const {
    return std::span(numbers_).subspan(starts_[tile], owned_[tile]);
  }
  /// These, and then those about the tile.
  std::span<const std::uint32_t> withHalo(std::size_t tile) const {
    return std::span(numbers_).subspan(starts_[tile], starts_[tile + 1] - starts_[tile]);
  }

 private:
  std::vector<std::size_t> starts_;     // of each tile among the numbers, and the end
  std::vector<std::size_t> owned_;      // points of each tile
  std::vector<std::uint32_t> numbers_;  // of the points, tile by tile
};

}  // namespace Velorn::Flights
