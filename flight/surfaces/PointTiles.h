// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Nearest points in space. The points lie in square tiles of some thousands each, every one with a
// tree of its own: trees that fit a processor's cache are built and asked in a time that grows with
// the number of points and no faster, and on all threads.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "flight/surfaces/NeighbourTree.h"

namespace Velorn::Flights {

class PointTiles {
 public:
  /// @param points   finite; read here only
  /// @param members  numbers of the points that count
  PointTiles(std::span<const point> points, const std::vector<std::uint32_t>& members);
  ~PointTiles();
  PointTiles(PointTiles&&) noexcept;
  PointTiles& operator=(PointTiles&&) = delete;

  bool empty() const { return places_.empty(); }

  /// Adds the nearest points to what was found; the same for any number of threads.
  /// @param place  finite
  void search(const point& place, Neighbours& neighbours) const;

 private:
  using Cell = std::array<std::ptrdiff_t, 2>;

  void lay(std::span<const point> points, const std::vector<std::uint32_t>& members);
  void sortIntoTiles(std::span<const point> points, const std::vector<std::uint32_t>& members);
  void growTrees();
  Cell cellOf(const point& place) const;
  std::size_t tileOf(const Cell& cell) const {
    return static_cast<std::size_t>(cell[1] * columns_ + cell[0]);
  }
  void searchRing(const point& place, const Cell& middle, std::ptrdiff_t ring,
                  Neighbours& neighbours) const;
  void searchTile(const point& place, const Cell& cell, Neighbours& neighbours) const;

  double west_ = 0.0, south_ = 0.0, side_ = 1.0;  // of the tiles [m]
  std::ptrdiff_t columns_ = 1, rows_ = 1;
  std::vector<point> places_;           // tile by tile
  std::vector<std::uint32_t> numbers_;  // of the places
  std::vector<std::uint32_t> begins_;   // of each tile in these, and their end
  std::vector<std::unique_ptr<NeighbourTree>> trees_;
};

}  // namespace Velorn::Flights
