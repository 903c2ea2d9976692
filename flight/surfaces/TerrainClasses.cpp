// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/TerrainClasses.h"

#include <array>
#include <cmath>

namespace Velorn::Flights {

namespace {

using Velorn::TerrainType;

struct ClassKind {
  std::uint8_t lasClass;
  SurfaceKind kind;
};

/// Classes of the LAS format that say something; of the others nothing is known.
constexpr std::array<ClassKind, 25> classKinds{{
    {2, SurfaceKind::ground},   // ground
    {3, SurfaceKind::none},     // low vegetation
    {4, SurfaceKind::none},     // medium vegetation
    {5, SurfaceKind::none},     // high vegetation
    {6, SurfaceKind::roof},     // building
    {7, SurfaceKind::none},     // noise
    {8, SurfaceKind::ground},   // model key point
    {9, SurfaceKind::none},     // water
    {10, SurfaceKind::none},    // rail
    {11, SurfaceKind::ground},  // road
    {13, SurfaceKind::none},    // wire, guard
    {14, SurfaceKind::none},    // wire, conductor
    {15, SurfaceKind::none},    // transmission tower
    {16, SurfaceKind::none},    // wire, connector
    {18, SurfaceKind::none},    // high noise
    {19, SurfaceKind::none},    // structure overhead
    {20, SurfaceKind::ground},  // ground near a breakline
    {21, SurfaceKind::none},    // snow
    {22, SurfaceKind::none},    // what another flight did not see
    {40, SurfaceKind::bed},     // bathymetric point
    {41, SurfaceKind::none},    // water surface
    {42, SurfaceKind::none},    // derived water surface
    {43, SurfaceKind::none},    // object in the water
    {44, SurfaceKind::none},    // charted object in the water
    {45, SurfaceKind::none},    // no bottom found
}};

constexpr auto kindsByClass = [] {
  std::array<SurfaceKind, 256> kinds{};
  for (const ClassKind& row : classKinds) kinds[row.lasClass] = row.kind;
  return kinds;
}();

}  // namespace

SurfaceKind kindOf(std::uint8_t lasClass) {
  return kindsByClass[lasClass];
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
