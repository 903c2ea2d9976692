// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads surveyed control and lays ground truth over its patches:
//
//     const auto control = readControl("control.csv", 1.0);
//     saveGroundTruth("control.kx", patchPoints(control.patches, 0.25));
//
// The file is delimited text (comma, semicolon, tab or blanks; lines that begin with '#' or '%' are
// passed over). A first line of names says what the columns are: E, easting or x; N, northing or y;
// h, height or z; nx, ny, nz; radius; id or name; in any order and case, others are passed over.
// Without it they are E, N, h, or these and nx, ny, nz, or these and the radius.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include <velorn/flight/Containers.h>

namespace Velorn::Flights {

/// A plane disc of known place.
struct ControlPatch {
  std::string name;                      ///< of the file, or "line 5"; for messages
  Geomra::PhysicalSpace::point centre;   ///< (easting, northing, ellipsoidal height) [m]
  Geomra::PhysicalSpace::vector normal;  ///< of length one, not downward
  double radius = 0.0;                   ///< [m]
};

struct Control {
  std::vector<ControlPatch> patches;  ///< in the order of the file
  std::size_t withoutNormal = 0;      ///< those that were taken for horizontal
};

/// Reads surveyed points. One without a normal (no such columns, or all three empty) gets (0, 0,
/// 1); normals are made of length one and turned upward.
/// @param defaultRadius  of points without one [m]
/// @throws Error: a radius below zero or above 1000 m as default; for the file; no point in it;
///         columns that are missing or there twice; and naming the line, a word that is no finite
///         number, a height beyond 100 km, a normal of no length, a radius as above
Control readControl(const std::filesystem::path& file, double defaultRadius);

/// Ground truth on each patch: its centre and the points of a square lattice around it, in the
/// plane of the patch, that are not farther away than the radius. Class 2, ground.
/// @param spacing  of the lattice [m]
/// @throws Error for a spacing that is not above zero, and, naming a patch, where there
///         would be more than some ten million points
GroundTruthColumns patchPoints(const std::vector<ControlPatch>& patches, double spacing);

}  // namespace Velorn::Flights
