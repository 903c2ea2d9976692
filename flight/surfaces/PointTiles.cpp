// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/PointTiles.h"

#include <algorithm>
#include <cmath>

#include "flight/strips/ParallelLoop.h"

namespace Velorn::Flights {
namespace {

constexpr double pointsOfTile = 8192.0;

/// Square of the distance in plan from a place to a tile.
double squareTo(double east, double north, double side) {
  const double x = std::max({0.0, -east, east - side}), y = std::max({0.0, -north, north - side});
  return x * x + y * y;
}

}  // namespace

PointTiles::PointTiles(std::span<const point> points, const std::vector<std::uint32_t>& members) {
  if (members.empty()) return;
  lay(points, members);
  sortIntoTiles(points, members);
  growTrees();
}

PointTiles::~PointTiles() = default;
PointTiles::PointTiles(PointTiles&&) noexcept = default;

/// Chooses tiles that hold `pointsOfTile` each if the points are spread evenly over their extent.
void PointTiles::lay(std::span<const point> points, const std::vector<std::uint32_t>& members) {
  point low = points[members.front()], high = low;
  for (const std::uint32_t number : members) {
    const point& p = points[number];
    low = {std::min(low.x, p.x), std::min(low.y, p.y), 0.0};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), 0.0};
  }
  const double width = high.x - low.x, height = high.y - low.y;
  const double tiles = std::ceil(static_cast<double>(members.size()) / pointsOfTile);
  side_ = std::max({std::sqrt(width * height / tiles), width / tiles, height / tiles, 1e-3});
  west_ = low.x;
  south_ = low.y;
  columns_ = 1 + static_cast<std::ptrdiff_t>(width / side_);
  rows_ = 1 + static_cast<std::ptrdiff_t>(height / side_);
}

void PointTiles::sortIntoTiles(std::span<const point> points,
                               const std::vector<std::uint32_t>& members) {
  begins_.assign(static_cast<std::size_t>(columns_ * rows_) + 1, 0);
  for (const std::uint32_t number : members) ++begins_[tileOf(cellOf(points[number])) + 1];
  for (std::size_t k = 1; k < begins_.size(); ++k) begins_[k] += begins_[k - 1];
  places_.resize(members.size());
  numbers_.resize(members.size());
  std::vector<std::uint32_t> next(begins_.begin(), begins_.end() - 1);
  for (const std::uint32_t number : members) {
    const std::uint32_t at = next[tileOf(cellOf(points[number]))]++;
    places_[at] = points[number];
    numbers_[at] = number;
  }
}

void PointTiles::growTrees() {
  trees_.resize(begins_.size() - 1);
  forEachInParallel(0, trees_.size(), 1, [this](std::size_t k) {
    const std::size_t count = begins_[k + 1] - begins_[k];
    if (count == 0) return;
    trees_[k] = std::make_unique<NeighbourTree>(std::span(places_).subspan(begins_[k], count),
                                                std::span(numbers_).subspan(begins_[k], count));
  });
}

/// The tile of a place; for one beside them the nearest at the edge.
PointTiles::Cell PointTiles::cellOf(const point& place) const {
  const auto at = [this](double distance, std::ptrdiff_t count) {
    return static_cast<std::ptrdiff_t>(
        std::clamp(distance / side_, 0.0, static_cast<double>(count - 1)));
  };
  return {at(place.x - west_, columns_), at(place.y - south_, rows_)};
}

void PointTiles::search(const point& place, Neighbours& neighbours) const {
  if (empty()) return;
  const Cell middle = cellOf(place);
  const std::ptrdiff_t last = std::max(columns_, rows_);
  for (std::ptrdiff_t ring = 0; ring < last; ++ring) {
    const double least = side_ * static_cast<double>(std::max<std::ptrdiff_t>(ring - 1, 0));
    if (least * least >= neighbours.limit()) return;
    searchRing(place, middle, ring, neighbours);
  }
}

void PointTiles::searchRing(const point& place, const Cell& middle, std::ptrdiff_t ring,
                            Neighbours& neighbours) const {
  const std::ptrdiff_t first = std::max<std::ptrdiff_t>(middle[1] - ring, 0);
  const std::ptrdiff_t last = std::min(middle[1] + ring, rows_ - 1);
  for (std::ptrdiff_t row = first; row <= last; ++row) {
    const bool whole = std::abs(row - middle[1]) == ring;
    const std::ptrdiff_t step = whole || ring == 0 ? 1 : 2 * ring;
    for (std::ptrdiff_t column = middle[0] - ring; column <= middle[0] + ring; column += step) {
      if (column >= 0 && column < columns_) searchTile(place, {column, row}, neighbours);
    }
  }
}

void PointTiles::searchTile(const point& place, const Cell& cell, Neighbours& neighbours) const {
  const std::size_t tile = tileOf(cell);
  if (!trees_[tile]) return;
  const double east = place.x - west_ - side_ * static_cast<double>(cell[0]);
  const double north = place.y - south_ - side_ * static_cast<double>(cell[1]);
  if (squareTo(east, north, side_) >= neighbours.limit()) return;
  trees_[tile]->search(place, neighbours);
}

}  // namespace Velorn::Flights
