// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/TerrainClasses.h"

#include <cmath>

namespace Velorn::Flights {

using Velorn::TerrainType;

SurfaceKind kindOf(std::uint8_t lasClass) {
  switch (lasClass) {
    case 6:  // building
      return SurfaceKind::roof;
    case 40:  // bathymetric point
      return SurfaceKind::bed;
    case 2:   // ground
    case 8:   // model key point
    case 11:  // road
    case 20:  // ground near a breakline
      return SurfaceKind::ground;
    case 3:  // vegetation
    case 4:
    case 5:
    case 7:   // noise
    case 9:   // water
    case 10:  // rail
    case 13:  // wires and their towers
    case 14:
    case 15:
    case 16:
    case 18:  // noise
    case 19:  // structure overhead
    case 21:  // snow
    case 22:  // what another flight did not see
    case 41:  // water
    case 42:
    case 43:  // objects in the water
    case 44:
    case 45:  // no bottom found
      return SurfaceKind::none;
    default:
      return SurfaceKind::unknown;
  }
}

void LowestGround::add(const point& place) {
  Lowest& lowest = cells_[cellOf(place, side)];
  if (lowest.known && lowest.place.z <= place.z) return;
  lowest = {true, place};
}

bool LowestGround::isFarBelow(const point& place, const vector& normal) const {
  const Cell cell = cellOf(place, side);
  int below = 0, offThePlane = 0;
  for (std::int64_t i = -1; i <= 1; ++i) {
    for (std::int64_t j = -1; j <= 1; ++j) {
      const Lowest* lowest = cells_.find({cell.column + i, cell.row + j});
      if (!lowest || !(place.z - lowest->place.z > farBelow)) continue;
      ++below;
      const double off = dot(place - lowest->place, normal);
      if (std::abs(off) > farBelow * normal.z) ++offThePlane;
    }
  }
  return 2 * offThePlane > below;
}

std::uint8_t terrainClass(SurfaceKind kind, const point& place, const vector& normal,
                          const LowestGround& ground, double steepest) {
  if (kind == SurfaceKind::none) return noTerrain;
  if (kind == SurfaceKind::bed) return codeOf(TerrainType::BED_POINTS);
  if (kind == SurfaceKind::roof ||
      (kind == SurfaceKind::unknown && ground.isFarBelow(place, normal))) {
    return codeOf(TerrainType::ROOF);
  }
  return codeOf(normal.z < steepest ? TerrainType::SLOPE : TerrainType::FLAT);
}

}  // namespace Velorn::Flights
