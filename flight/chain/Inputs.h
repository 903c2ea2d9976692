// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether the files of a run belong together: looked for before any work.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include <velorn/Trajectory.h>
#include <velorn/flight/Reports.h>
#include <velorn/flight/Settings.h>

namespace Velorn::Flights {

/// @throws Error, naming the strip: a file that is no container, more than one grid, no points,
///         no week, a missing field that the chain needs, times or scanner coordinates that are no
///         numbers
/// @param id  file id
StripFacts factsOf(const std::filesystem::path& strip, std::uint32_t id);

/// @return nothing for a ground truth without points
/// @throws Error, naming the file, for one without a grid, positions or normals
std::optional<Box> boxOfGroundTruth(const std::filesystem::path& groundTruth);

/// Refuses a strip that the trajectory does not cover.
/// @throws Error that names the strip, and both ranges
void checkTimes(const StripFacts& strip, const Velorn::Trajectory& trajectory);

/// Refuses strips that the trajectory does not cover, and ground truth far from all strips.
/// @throws Error that names the files, and both ranges
void checkTogether(const std::vector<StripFacts>& strips, const Velorn::Trajectory& trajectory,
                   const FlightSettings& settings);

/// Refuses containers of an import that has not come to its end.
/// @throws Error that names the folder
void requireFinishedImports(const std::vector<std::filesystem::path>& files);

/// Refuses a strip that is given twice: by a link, or as a copy.
/// @throws Error that names both
void requireDifferentStrips(const std::vector<StripFacts>& strips);

}  // namespace Velorn::Flights
