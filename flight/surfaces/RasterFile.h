// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The container of a raster: chosen points of a strip, or of the ground truth.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "flight/strips/GridFile.h"

namespace Velorn::Flights {

/// What is known about the chosen points beside the strip's fields.
struct PlanesOfRaster {
  std::vector<double> roughness;  ///< [m]
  std::vector<double> distance;   ///< of the point from its plane [m]
};

/// @throws Error when the two are one file
void refuseSameFile(const std::filesystem::path& points, const std::filesystem::path& raster);

/// A raster with the chosen points of a strip, in its layout, and "Roughness" and "PlaneDistance".
/// @param chosen  ascending numbers of points
/// @throws Error when a column of the strip cannot be read
Strandel::Bundle rasterOfStrip(const GridFile& strip, std::span<const std::uint32_t> chosen,
                               PlanesOfRaster planes);

}  // namespace Velorn::Flights
