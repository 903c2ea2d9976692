// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The ground that a synthetic flight measures: square tiles with flat and inclined fields, a river
// bed, and houses with flat and gabled roofs. Every surface is a plane with a rectangular
// footprint; the walls between them stop beams without giving a point.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights::Simulation {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

/// A rectangle in plan with an axis of any direction.
struct Rectangle {
  double easting = 0.0, northing = 0.0;  ///< where u = v = 0 [m]
  double cosine = 1.0, sine = 0.0;       ///< of the u axis: its east and north component
  double uLow = 0.0, uHigh = 0.0;        ///< [m]
  double vLow = 0.0, vHigh = 0.0;        ///< [m]; v is u turned by 90° to the left

  double u(double e, double n) const { return cosine * (e - easting) + sine * (n - northing); }
  double v(double e, double n) const { return cosine * (n - northing) - sine * (e - easting); }
  bool contains(double e, double n, double slack = 0.0) const;
};

/// LAS classes of the surfaces.
enum class Surface : std::uint8_t { ground = 2, building = 6, bed = 40 };

/// One surface. Its number is its place in the list of the terrain.
struct Plane {
  point through;  ///< a point of it [m]
  vector normal;  ///< unit, upward; east, north, up in the projection
  Rectangle footprint;
  Surface surface = Surface::ground;
  std::uint32_t tile = 0;

  double heightAt(double e, double n) const;
  double slope() const;   ///< [rad]
  double aspect() const;  ///< azimuth of the steepest descent, clockwise from grid north [rad]
};

/// Bounds in plan [m].
struct Extent {
  double west, east, south, north;
};

/// A straight line between two projected points.
struct Segment {
  point from, to;
  point at(double t) const { return from + t * (to - from); }
};

/// Where a segment meets the terrain first.
struct Hit {
  std::uint32_t plane;  ///< its number
  double along;         ///< 0 at the beginning of the segment, 1 at its end
};

class Terrain {
 public:
  /// Height of the ground, about which fields and river lie [m].
  static constexpr double level = 450.0;

  /// Tiles that cover an extent; what lies on a tile depends on the seed and its place only.
  /// @param scale  of all lengths
  Terrain(const Extent& extent, std::uint64_t seed, double scale = 1.0);

  const std::vector<Plane>& planes() const { return planes_; }
  double lowest() const { return lowest_; }    ///< of all surfaces [m]
  double highest() const { return highest_; }  ///< of all surfaces [m]

  /// True when a place belongs to a plane: inside its footprint and, for the ground, not under a
  /// house.
  bool belongs(std::uint32_t plane, double easting, double northing) const;

  /// The first surface on a segment that comes from above all surfaces; nothing when there is none,
  /// or when a wall is hit before it.
  std::optional<Hit> firstHit(const Segment& segment) const;

 private:
  struct Tile {
    std::uint32_t firstPlane = 0;
    std::uint32_t grounds = 0, roofs = 0;  // the planes of a tile: ground first
    Rectangle house;                       // empty unless there are roofs
  };
  enum class Outcome { passes, isStopped, hits };

  void addTile(std::int64_t column, std::int64_t row, std::uint64_t seed);
  void addPlane(const Plane& plane, bool roof);
  void addField(const Rectangle& square, double height, double slope, double aspect);
  void addRiver(const Rectangle& square);
  void addHouse(const Rectangle& house, double eaves, double slope);
  bool belowGround(const Tile& tile, const point& place) const;
  double wallOfHouse(const Tile& tile, const Segment& segment) const;
  Outcome passTile(const Tile& tile, const Segment& segment, double from, double to,
                   Hit& hit) const;

  double scale_, side_;  // of a tile [m]
  double west_ = 0.0, south_ = 0.0;
  std::int64_t columns_ = 0, rows_ = 0;
  std::vector<Tile> tiles_;
  std::vector<Plane> planes_;
  double lowest_ = level, highest_ = level;
};

}  // namespace Velorn::Flights::Simulation
