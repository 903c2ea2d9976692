// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which points of two strips fell on the same plane near each other. The planes are known, nothing
// is searched for in the measurements.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "flight/simulation/Terrain.h"
#include <velorn/TerrainType.h>

namespace Velorn::Flights::Simulation {

/// Kind of surface for the adjustment; what falls by more than 3° and is no roof is a slope.
Velorn::TerrainType kindOf(const Plane& plane);

/// A point whose true place is known.
struct Place {
  point at;  ///< on the plane [m]
  std::uint32_t plane;
  std::uint32_t number;  ///< of the point in its strip or in the ground truth
};

/// The points of a strip, or of the ground truth, by the planes that they lie on.
class PlacesOnPlanes {
 public:
  /// @param planes  number of all planes; those of the places are below it
  PlacesOnPlanes(std::vector<Place> places, std::size_t planes);

  /// In the order of their numbers.
  std::span<const Place> on(std::uint32_t plane) const;

 private:
  std::vector<Place> places_;
  std::vector<std::size_t> firstOn_;  // of each plane, and the end
};

/// Two points of one plane, at most 5 m apart.
struct PlanePair {
  std::uint32_t plane;
  std::uint32_t i, j;  ///< numbers of the points
};

/// All pairs of two sides.
struct PairedSides {
  std::size_t i, j;  ///< places in the list of sides, i < j
  std::vector<PlanePair> pairs;
};

/// Draws pairs for all sides that have planes in common; two sides without pairs are left out. Each
/// kind of surface of each two strips has its turn, and in it each plane, so that none is drowned
/// in flat ground; the partner is the nearest point of the other side. A point is drawn once as the
/// first of two given sides; it may be the partner of several.
/// @param sides   the strips, and the ground truth as the last
/// @param planes  of the terrain
/// @param count   of pairs, at most; a tenth of it, at most, are pairs with the ground truth
std::vector<PairedSides> pairedSides(const std::vector<PlacesOnPlanes>& sides,
                                     const std::vector<Plane>& planes, std::size_t count,
                                     std::uint64_t seed);

}  // namespace Velorn::Flights::Simulation
