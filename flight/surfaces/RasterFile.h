// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The containers of what rasterizing finds: the planar points of a strip, and its raster.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "flight/strips/GridFile.h"
#include "flight/surfaces/MatchPoints.h"

namespace Velorn::Flights {

/// @throws Error when the two are one file
void refuseSameFile(const std::filesystem::path& points, const std::filesystem::path& made);

/// What was found of the planar points of a strip: "PointNumber", "NormalVector" and
/// "RigorousClassification". The strip has the rest.
/// @param numbers  ascending
Strandel::Bundle planarBundle(const GridFile& strip, std::vector<std::uint32_t> numbers,
                              std::vector<vector> normals, std::vector<std::uint8_t> codes);

/// A raster: measurements and planes of the chosen points, and what a strip has beside them.
/// @param numbers  of the chosen points in the strip, ascending
/// @throws Error when a column of the strip cannot be read
Strandel::Bundle rasterBundle(const GridFile& strip, MatchPoints points,
                              std::span<const std::uint32_t> numbers);

}  // namespace Velorn::Flights
