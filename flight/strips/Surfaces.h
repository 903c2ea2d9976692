// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where the points of a synthetic strip truly fell.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include <velorn/flight/Containers.h>

namespace Velorn::Flights {

/// Which surface each point of a strip fell on, in the order of the strip's points.
struct SurfaceColumns {
  Points positions;                  ///< true places on the surfaces [m]
  std::vector<std::uint32_t> plane;  ///< number of the plane
};

/// @throws Error, naming the file: columns of unequal length, a file that cannot be written
void saveSurfaces(const std::filesystem::path& file, SurfaceColumns columns);

}  // namespace Velorn::Flights
