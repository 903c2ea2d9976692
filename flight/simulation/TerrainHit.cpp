// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where a beam meets the terrain first.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "flight/simulation/Terrain.h"

namespace Velorn::Flights::Simulation {
namespace {

constexpr double never = std::numeric_limits<double>::infinity();

/// The walk along one axis of the tiles: the index, and at which t it changes next.
struct Axis {
  Axis(double origin, double from, double to, double side) {
    const double begin = (from - origin) / side, length = (to - from) / side;
    index = static_cast<std::int64_t>(std::floor(begin));
    if (length == 0.0) return;
    step = length > 0.0 ? 1 : -1;
    between = 1.0 / std::abs(length);
    const double border = static_cast<double>(index) + (step > 0 ? 1.0 : 0.0);
    next = (border - begin) / length;
  }
  void advance() {
    index += step;
    next += between;
  }

  std::int64_t index = 0, step = 0;
  double next = never, between = never;
};

/// The part of a segment that lies in a slab low <= x <= high, x going from a to b.
void clip(double a, double b, double low, double high, double& from, double& to) {
  if (a == b) {
    if (a < low || a > high) to = -never;
    return;
  }
  const double first = (low - a) / (b - a), second = (high - a) / (b - a);
  from = std::max(from, std::min(first, second));
  to = std::min(to, std::max(first, second));
}

}  // namespace

/// Inside the ground at the border of a tile: a step between two fields was hit.
bool Terrain::belowGround(const Tile& tile, const point& place) const {
  constexpr double slack = 1e-6;  // the place is on the border, give or take a rounding
  for (std::uint32_t i = tile.firstPlane; i < tile.firstPlane + tile.grounds; ++i) {
    const Plane& ground = planes_[i];
    if (ground.footprint.contains(place.x, place.y, slack)) {
      return place.z < ground.heightAt(place.x, place.y) - slack;
    }
  }
  return false;
}

/// The t at which a segment goes through a wall of the tile's house.
double Terrain::wallOfHouse(const Tile& tile, const Segment& segment) const {
  if (tile.roofs == 0) return never;
  const Rectangle& house = tile.house;
  const point &a = segment.from, &b = segment.to;
  double from = 0.0, to = 1.0;
  clip(house.u(a.x, a.y), house.u(b.x, b.y), house.uLow, house.uHigh, from, to);
  clip(house.v(a.x, a.y), house.v(b.x, b.y), house.vLow, house.vHigh, from, to);
  if (from > to || from == 0.0) return never;  // passes by, or comes from above
  const point entry = segment.at(from);
  double roof = never;  // the lower one of two planes that meet in a ridge
  for (std::uint32_t i = 0; i < tile.roofs; ++i) {
    roof = std::min(roof, planes_[tile.firstPlane + tile.grounds + i].heightAt(entry.x, entry.y));
  }
  if (entry.z >= roof) return never;
  return from;
}

Terrain::Outcome Terrain::passTile(const Tile& tile, const Segment& segment, double from, double to,
                                   Hit& hit) const {
  if (from > 0.0 && belowGround(tile, segment.at(from))) return Outcome::isStopped;
  const vector d = segment.to - segment.from;
  double first = never;
  for (std::uint32_t i = tile.firstPlane; i < tile.firstPlane + tile.grounds + tile.roofs; ++i) {
    const Plane& plane = planes_[i];
    const double t = dot(plane.through - segment.from, plane.normal) / dot(d, plane.normal);
    const point place = segment.at(t);
    if (t >= from && t <= to && t < first && belongs(i, place.x, place.y)) {
      first = t;
      hit = {i, t};
    }
  }
  if (wallOfHouse(tile, segment) < first) return Outcome::isStopped;
  return first == never ? Outcome::passes : Outcome::hits;
}

std::optional<Hit> Terrain::firstHit(const Segment& segment) const {
  Axis column(west_, segment.from.x, segment.to.x, side_),
      row(south_, segment.from.y, segment.to.y, side_);
  Hit hit{};
  double from = 0.0;
  while (from < 1.0) {
    const bool inside =
        column.index >= 0 && column.index < columns_ && row.index >= 0 && row.index < rows_;
    if (!inside) return std::nullopt;
    const double to = std::min({column.next, row.next, 1.0});
    const auto& tile = tiles_[static_cast<std::size_t>(row.index * columns_ + column.index)];
    const Outcome outcome = passTile(tile, segment, from, to, hit);
    if (outcome == Outcome::hits) return hit;
    if (outcome == Outcome::isStopped) return std::nullopt;
    from = to;
    (column.next <= row.next ? column : row).advance();
  }
  return std::nullopt;
}

}  // namespace Velorn::Flights::Simulation
