// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What kind of surface a point lies on, by its class, its plane and the heights about it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "flight/surfaces/CellTable.h"
#include "flight/surfaces/PlaneFit.h"
#include <velorn/TerrainType.h>

namespace Velorn::Flights {

/// Value of RigorousClassification for a kind of surface.
constexpr std::uint8_t codeOf(Velorn::TerrainType type) {
  return static_cast<std::uint8_t>(10 + static_cast<std::uint32_t>(type));
}

/// Place of a class in what there is one of per class: ground truth, roof, slope, bed points, flat.
constexpr std::size_t classIndexOf(std::uint8_t code) {
  return static_cast<std::size_t>(code - codeOf(Velorn::TerrainType::GROUND_TRUTH));
}

/// A point that is never matched.
inline constexpr std::uint8_t noTerrain = codeOf(Velorn::TerrainType::UNKNOWN);

/// True for the codes of surfaces that strips are matched on: roof, slope, bed points, flat.
constexpr bool isSurface(std::uint8_t code) {
  return code >= codeOf(Velorn::TerrainType::ROOF) && code <= codeOf(Velorn::TerrainType::FLAT);
}

/// What a class of the LAS format says about a surface.
enum class SurfaceKind : std::uint8_t { unknown, ground, roof, bed, none };

/// Building: roof; bathymetric point: bed; ground, key point and road: ground; vegetation, noise,
/// water, rails, wires, towers and what changes between flights: none; others: unknown.
SurfaceKind kindOf(std::uint8_t lasClass);

/// The lowest planar point of each cell of a coarse grid.
class LowestGround {
 public:
  void add(const point& place);

  /// Whether a planar point lies high above the lowest points about it (its cell and the eight next
  /// to it), without being on the same slope: more than 2.5 m above at least one of them, and more
  /// than 2.5 m off most of those by its own plane.
  bool isFarBelow(const point& place, const vector& normal) const;

 private:
  static constexpr double side = 15.0;     // [m]
  static constexpr double farBelow = 2.5;  // [m]

  struct Lowest {
    bool known = false;
    point place;
  };
  CellTable<Lowest> cells_;
};

/// The class of a point with a plane.
/// @param steepest  smallest vertical component of a normal that is no slope's
std::uint8_t terrainClass(SurfaceKind kind, const point& place, const vector& normal,
                          const LowestGround& ground, double steepest);

}  // namespace Velorn::Flights
