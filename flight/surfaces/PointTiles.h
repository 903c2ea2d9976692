// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Nearest points in space. The points lie in square tiles of some thousands each, every one with a
// tree of its own: trees that fit a processor's cache are built and asked in a time that grows with
// the number of points and no faster, and on all threads.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

using Geomra::PhysicalSpace::point;

/// One found point.
struct Neighbour {
  std::uint32_t number;  ///< among the points that the tiles were made from
  double square;         ///< of its distance [m²]
};

/// The square of a neighbour's distance where there is none.
constexpr double infinite = std::numeric_limits<double>::infinity();

/// The nearest points found so far, the nearest one first; the room is somebody else's.
class Neighbours {
 public:
  /// @param room    for as many points as are wanted
  /// @param radius  points farther away are none [m]
  /// @param wanted  points that it is false for are none; none: all are wanted; outlives this
  /// object
  Neighbours(std::span<Neighbour> room, double radius,
             const std::function<bool(std::uint32_t number)>* wanted = nullptr)
      : room_(room),
        limit_(std::nextafter(radius * radius, std::numeric_limits<double>::max())),
        wanted_(wanted) {}

  std::span<const Neighbour> found() const { return room_.first(size_); }

  /// Of points as far away as each other the one found first comes first.
  void add(const Neighbour& neighbour) {
    if (size_ < room_.size()) ++size_;
    std::size_t k = size_ - 1;
    for (; k > 0 && room_[k - 1].square > neighbour.square; --k) room_[k] = room_[k - 1];
    room_[k] = neighbour;
  }
  /// What is to be added must be wanted.
  bool isWanted(std::uint32_t number) const { return !wanted_ || (*wanted_)(number); }
  /// A point that is to be added must be nearer [m²].
  double limit() const { return size_ < room_.size() ? limit_ : room_.back().square; }

 private:
  std::span<Neighbour> room_;
  std::size_t size_ = 0;
  double limit_;
  const std::function<bool(std::uint32_t)>* wanted_;
};

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
  class Tree;
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
  std::vector<std::unique_ptr<Tree>> trees_;
};

}  // namespace Velorn::Flights
