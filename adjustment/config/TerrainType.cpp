// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <string_view>

#include <velorn/TerrainType.h>

namespace Velorn {

std::string terrainTypeToString(TerrainType type) {
  constexpr std::array<std::string_view, 5> terrainNames{"GROUND_TRUTH", "ROOF", "SLOPE",
                                                         "BED_POINTS", "FLAT"};
  const auto index = static_cast<std::uint32_t>(type);
  return std::string(index < terrainNames.size() ? terrainNames[index] : "UNKNOWN");
}

}  // namespace Velorn
