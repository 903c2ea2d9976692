// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a strip must hold to be rasterized, and the classes that its owner gave.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "flight/strips/GridFile.h"
#include "flight/surfaces/Surface.h"

namespace Velorn::Flights {

/// A field attribute of this name and value marks what version 0.1 wrote into strips, which kept
/// given classes under another name.
inline constexpr const char* originName = "Origin";
inline constexpr const char* originText = "velorn rasterize";

/// Names of fields.
inline constexpr const char* normalsName = "NormalVector";
inline constexpr const char* classesName = "RigorousClassification";
inline constexpr const char* givenClassesName = "GivenClassification";

/// Looks for all that a raster holds, without reading values.
/// @throws Error that names file, object, and where it comes from
void checkStrip(const GridFile& strip);

/// The cloud of each point: left out where position or time cannot be used.
std::vector<Cloud> cloudsOf(const GridFile& strip, std::span<const point> positions);

/// The classes that the owner of a strip gave, one per point.
/// @return nothing where none are given
std::optional<std::vector<std::uint8_t>> givenClasses(const GridFile& strip);

}  // namespace Velorn::Flights
