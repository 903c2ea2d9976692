// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Adjusted strips as the LAS files that they were imported from, with the adjusted coordinates.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace Velorn::Flights {

/// A container of adjusted points, the file that they were imported from, and where they go.
struct LasStrip {
  std::filesystem::path container, source, target;
  std::uint64_t points = 0;
};

/// What is known without reading points. The source is looked for by its name in `sourceFolder`,
/// unless that is empty or has no such file, then at the place that the import recorded.
/// @throws Error that names the container: not imported from LAS; its source is missing, or has
///         fewer points; its output is a source, or that of another container
std::vector<LasStrip> lasStripsOf(const std::vector<std::filesystem::path>& containers,
                                  const std::filesystem::path& sourceFolder,
                                  const std::filesystem::path& output);

/// Writes the records of the source that the container's points come from, in the source's order,
/// with the container's world positions. All points are in memory.
/// @throws Error that names the file: a point of the source that is not there, comes twice or has
///         another time than the container's; what copyLas refuses
void writeLas(const LasStrip& strip);

}  // namespace Velorn::Flights
