// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/Tiles.h"

#include <algorithm>

namespace Velorn::Flights {
namespace {

constexpr double pointsPerTile = 100'000.0;  // their tree stays in a core's cache
constexpr double leastSide = 8.0;            // in radii: the halo stays about half a tile

/// Side of the tiles [m]: cells of the least side are counted, which do not heed the emptiness of
/// the bounding box.
double sideOf(std::span<const point> points, std::span<const std::uint32_t> members,
              double radius) {
  const double least = leastSide * radius;
  CellTable<char> occupied;
  for (const std::uint32_t i : members) occupied.numberOf(cellOf(points[i], least));
  const double perCell = static_cast<double>(members.size()) /
                         static_cast<double>(std::max<std::size_t>(1, occupied.entries().size()));
  return least * std::max(1.0, std::round(std::sqrt(pointsPerTile / std::max(1.0, perCell))));
}

/// Calls visit(cell) for the other cells that a square of two radii about a place touches.
template <typename Visit>
void forEachCellAbout(const point& place, const Cell& cell, double side, double radius,
                      const Visit& visit) {
  const double reach = radius + 1e-6;  // of a place as far as 1e9 m, whose last digit is 1e-7 m
  const double x = place.x - static_cast<double>(cell.column) * side;
  const double y = place.y - static_cast<double>(cell.row) * side;
  if (std::min(x, y) > reach && std::max(x, y) < side - reach) return;
  for (std::int64_t i = x <= reach ? -1 : 0; i <= (x >= side - reach ? 1 : 0); ++i) {
    for (std::int64_t j = y <= reach ? -1 : 0; j <= (y >= side - reach ? 1 : 0); ++j) {
      if (i != 0 || j != 0) visit(Cell{cell.column + i, cell.row + j});
    }
  }
}

}  // namespace

Tiles::Tiles(std::span<const point> points, std::span<const std::uint32_t> members, double radius) {
  const double side = sideOf(points, members, radius);
  CellTable<std::size_t> tiles;  // points that each owns
  for (const std::uint32_t i : members) ++tiles[cellOf(points[i], side)];
  // A tile of the cloud, if the cell is one: the table is not to grow any more.
  const auto forEachTileAbout = [&](std::uint32_t i, const auto& visit) {
    forEachCellAbout(points[i], cellOf(points[i], side), side, radius, [&](const Cell& cell) {
      if (tiles.find(cell)) visit(tiles.numberOf(cell));
    });
  };
  std::vector<std::size_t> about(tiles.entries().size());
  for (const std::uint32_t i : members) {
    forEachTileAbout(i, [&](std::size_t tile) { ++about[tile]; });
  }
  starts_.push_back(0);
  std::vector<std::size_t> next, nextAbout;
  for (std::size_t tile = 0; tile < about.size(); ++tile) {
    owned_.push_back(tiles.entries()[tile].value);
    next.push_back(starts_.back());
    nextAbout.push_back(next.back() + owned_.back());
    starts_.push_back(nextAbout.back() + about[tile]);
  }
  numbers_.resize(starts_.back());
  for (const std::uint32_t i : members) {
    numbers_[next[tiles.numberOf(cellOf(points[i], side))]++] = i;
    forEachTileAbout(i, [&](std::size_t tile) { numbers_[nextAbout[tile]++] = i; });
  }
}

}  // namespace Velorn::Flights
