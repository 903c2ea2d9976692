// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether the files of a run belong together: looked for before any work.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "flight/settings/Settings.h"
#include <velorn/Trajectory.h>

namespace Velorn::Flights {

/// Bounds of points [m]; of no use where a coordinate is no number.
struct Box {
  std::array<double, 3> low{}, high{};

  /// In plan, and within `reach` of each other.
  bool isNear(const Box& other, double reach) const;
  bool isFinite() const;
};

/// What a strip's container says without its points being read.
struct StripFacts {
  std::filesystem::path file;
  std::size_t points = 0;
  std::uint32_t week = 0;          ///< GPS week
  double first = 0.0, last = 0.0;  ///< time [s of week]
  Box box;
  double farthestForward = 0.0;  ///< largest amount of a forward scanner coordinate [m]
};

/// @throws Error, naming the strip: a file that is no container, more than one grid, no points,
///         no week, a missing field that the chain needs, times or scanner coordinates that are no
///         numbers
StripFacts factsOf(const std::filesystem::path& strip);

/// @return nothing for a ground truth without points
/// @throws Error, naming the file, for one without a grid, positions or normals
std::optional<Box> boxOfGroundTruth(const std::filesystem::path& groundTruth);

/// Refuses strips that the trajectory does not cover, and ground truth far from all strips.
/// @throws Error that names the files, and both ranges
void checkTogether(const std::vector<StripFacts>& strips, const Velorn::Trajectory& trajectory,
                   const Project& project);

}  // namespace Velorn::Flights
