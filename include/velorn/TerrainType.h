// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The kinds of surface that correspondences and raster cells are told apart by.
#pragma once

#include <cstdint>
#include <string>

#include <velorn/Visibility.h>

namespace Velorn {

/// Kind of surface; the order is that of every per-class list of the run configuration. The class
/// byte of a correspondence is 10 plus this value.
enum class TerrainType : std::uint32_t {
  GROUND_TRUTH = 0,
  ROOF = 1,
  SLOPE = 2,
  BED_POINTS = 3,
  FLAT = 4,
  UNKNOWN = 5
};

/// @return the enumerator's name, "UNKNOWN" for every value above 4
VELORN_EXPORT std::string terrainTypeToString(TerrainType type);

}  // namespace Velorn
