// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Nearest points in space among some thousands: the one search that planes, spacings and the
// matching are made with. Those who have more points lay them in tiles, each with a tree.
//
//     Neighbours found(room, 5.0);
//     tree.search(place, found);
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <span>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

using Geomra::PhysicalSpace::point;

/// One found point.
struct Neighbour {
  std::uint32_t number;  ///< among the points that were searched
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
    if (size_ == room_.size()) limit_ = room_.back().square;
  }
  /// What is to be added must be wanted.
  bool isWanted(std::uint32_t number) const { return !wanted_ || (*wanted_)(number); }
  /// A point that is to be added must be nearer [m²].
  double limit() const { return limit_; }

 private:
  std::span<Neighbour> room_;
  std::size_t size_ = 0;
  double limit_;
  const std::function<bool(std::uint32_t)>* wanted_;
};

/// Refers to the places, which stay where they are.
class NeighbourTree {
 public:
  /// @param places   finite; at least one
  /// @param numbers  by which neighbours are told, one per place; empty: by their order
  explicit NeighbourTree(std::span<const point> places,
                         std::span<const std::uint32_t> numbers = {});
  ~NeighbourTree();
  NeighbourTree(NeighbourTree&&) noexcept;
  NeighbourTree& operator=(NeighbourTree&&) = delete;

  /// Adds the nearest places to what was found; which of equally distant ones hangs on the places
  /// and their order alone. It ends when all that are wanted lie at the very place: else each of a
  /// million points at one place would look at all of them.
  /// @param place  finite
  void search(const point& place, Neighbours& neighbours) const;

 private:
  class Index;
  std::span<const std::uint32_t> numbers_;
  std::unique_ptr<Index> index_;
};

}  // namespace Velorn::Flights
