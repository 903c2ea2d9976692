// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The class codes of all points of a strip, and where the points went.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "flight/surfaces/Rasterize.h"
#include "flight/surfaces/Surface.h"

namespace Velorn::Flights {

/// What is known about the points of a strip, one entry per point.
struct PointsToClassify {
  std::span<const point> places;
  std::span<const Cloud> clouds;
  const Surface& surface;
  std::span<const std::uint8_t> lasClasses;
  const std::optional<std::vector<std::uint8_t>>& given;  ///< codes that stand where planar
};

/// Values of RigorousClassification, and all counts but those of selected points and surfaces.
/// @param counts  gets them
std::vector<std::uint8_t> classCodes(const PointsToClassify& points, const RasterSettings& options,
                                     RasterCounts& counts);

}  // namespace Velorn::Flights
