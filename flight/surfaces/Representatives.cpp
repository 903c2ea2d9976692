// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/Representatives.h"

#include <algorithm>
#include <limits>

namespace Velorn::Flights {
namespace {

/// Points of a cell; sums are about its corner, so that they keep their digits.
struct CellPoints {
  double x = 0.0, y = 0.0;                                   // sums [m]
  double nearest = std::numeric_limits<double>::infinity();  // squared distance [m²]
  std::uint32_t count = 0;
  std::uint32_t representative = 0;
};

struct InCell {
  double x, y;
  InCell(const point& place, const Cell& cell, double side)
      : x(place.x - static_cast<double>(cell.column) * side),
        y(place.y - static_cast<double>(cell.row) * side) {}
};

}  // namespace

std::vector<std::uint32_t> representatives(std::span<const point> points,
                                           std::span<const std::uint32_t> members, double side) {
  CellTable<CellPoints> cells;
  for (const std::uint32_t i : members) {
    const Cell cell = cellOf(points[i], side);
    const InCell in(points[i], cell, side);
    CellPoints& sums = cells[cell];
    sums.x += in.x;
    sums.y += in.y;
    ++sums.count;
  }
  for (const std::uint32_t i : members) {
    const Cell cell = cellOf(points[i], side);
    const InCell in(points[i], cell, side);
    CellPoints& sums = cells[cell];
    const double dx = in.x - sums.x / sums.count, dy = in.y - sums.y / sums.count;
    const double square = dx * dx + dy * dy;
    if (square < sums.nearest) sums.nearest = square, sums.representative = i;
  }
  std::vector<std::uint32_t> chosen;
  chosen.reserve(cells.entries().size());
  for (const auto& entry : cells.entries()) chosen.push_back(entry.value.representative);
  std::sort(chosen.begin(), chosen.end());
  return chosen;
}

}  // namespace Velorn::Flights
