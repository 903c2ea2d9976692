// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Values by the cells of a square grid in plan, for points that come more or less in order of
// place.
//
//     CellTable<std::size_t> counts;
//     for (const point& place : points) ++counts[cellOf(place, 5.0)];
#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

/// Largest coordinate of a place on Earth, in whatever projection [m]; cells of it can be counted.
inline constexpr double farthestPlace = 1e9;

/// False, too, for what is not finite.
inline bool isOnEarth(const Geomra::PhysicalSpace::point& place) {
  return std::abs(place.x) <= farthestPlace && std::abs(place.y) <= farthestPlace &&
         std::abs(place.z) <= farthestPlace;
}

/// A cell's place in a grid whose lines are the whole multiples of the side.
struct Cell {
  std::int64_t column = 0, row = 0;
  friend bool operator==(const Cell&, const Cell&) = default;
};

/// @param place  within `farthestPlace`
/// @param side   at least 1 mm
inline Cell cellOf(const Geomra::PhysicalSpace::point& place, double side) {
  return {static_cast<std::int64_t>(std::floor(place.x / side)),
          static_cast<std::int64_t>(std::floor(place.y / side))};
}

/// Only cells that were asked for take memory. The order is that in which they were met first.
template <typename T>
class CellTable {
 public:
  struct Entry {
    Cell cell;
    T value{};
  };

  /// The value of a cell, made if needed.
  T& operator[](const Cell& cell) { return entries_[numberOf(cell)].value; }

  /// Number of a cell in the order of the entries, made if needed.
  std::size_t numberOf(const Cell& cell) {
    if (last_ < entries_.size() && entries_[last_].cell == cell) return last_;
    if (3 * (entries_.size() + 1) > 2 * slots_.size()) grow();
    std::uint32_t& slot = slots_[slotOf(cell)];
    if (slot == 0) {
      entries_.push_back({cell, T{}});
      slot = static_cast<std::uint32_t>(entries_.size());
    }
    return last_ = slot - 1;
  }

  const T* find(const Cell& cell) const {
    const std::uint32_t slot = slots_.empty() ? 0 : slots_[slotOf(cell)];
    return slot == 0 ? nullptr : &entries_[slot - 1].value;
  }

  const std::vector<Entry>& entries() const { return entries_; }

  /// Calls use(value) for all of them.
  template <typename Use>
  void forEach(const Use& use) {
    for (Entry& entry : entries_) use(entry.value);
  }

 private:
  /// Where a cell is, or would be put.
  std::size_t slotOf(const Cell& cell) const {
    constexpr std::uint64_t odd = 0x9E3779B97F4A7C15U;  // 2^64 over the golden ratio
    std::uint64_t hash = static_cast<std::uint64_t>(cell.column) * odd;
    hash = (std::rotl(hash, 32) ^ static_cast<std::uint64_t>(cell.row)) * odd;
    std::size_t slot = (hash >> 20U) & (slots_.size() - 1);
    while (slots_[slot] != 0 && !(entries_[slots_[slot] - 1].cell == cell)) {
      slot = (slot + 1) & (slots_.size() - 1);
    }
    return slot;
  }

  void grow() {
    slots_.assign(slots_.empty() ? 64 : 2 * slots_.size(), 0);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      slots_[slotOf(entries_[i].cell)] = static_cast<std::uint32_t>(i + 1);
    }
  }

  std::vector<Entry> entries_;
  std::vector<std::uint32_t> slots_;  // 1 + number of the entry, or 0; a power of two of them
  std::size_t last_ = 0;              // number asked for last
};

}  // namespace Velorn::Flights
