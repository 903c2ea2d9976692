// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// From the files of the field to the containers of a run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include <velorn/flight/TextTrajectoryFormat.h>
#include <velorn/flight/Visibility.h>
#include <velorn/flight/Watch.h>

namespace Velorn::Flights {

/// How the trajectory is given.
struct TrajectorySource {
  std::vector<std::filesystem::path> files;  ///< SBET by their ending, otherwise text
  TextTrajectoryFormat text;                 ///< of those that are text
  double longestGap = 1.0;                   ///< between records, before it is told [s]
};

struct ImportSettings {
  std::vector<std::filesystem::path> strips;  ///< LAS files
  TrajectorySource trajectory;
  std::filesystem::path control;          ///< surveyed points; may be empty
  std::filesystem::path output;           ///< folder of the containers
  std::optional<unsigned> epsg;           ///< of the projection, when the LAS files do not say it
  std::optional<std::int64_t> week;       ///< GPS week in which the trajectory begins
  Geomra::PhysicalSpace::point leverArm;  ///< forward, right, down [m]
  Geomra::PhysicalSpace::point misalignment;  ///< roll, pitch, yaw [degree]
  double gap = 10.0;                          ///< without points, between two strips of a file [s]
  double controlRadius = 1.0;                 ///< of patches whose file does not say it [m]
  double controlSpacing = 0.25;               ///< of the points that a patch becomes [m]
  std::string decompress;  ///< command for compressed files; empty: they are refused
  bool overwrite = false;  ///< containers of an earlier import are replaced
};

struct ImportedStrip {
  std::filesystem::path file, source;
  std::size_t points = 0;
  std::int64_t week = 0;
  double first = 0.0, last = 0.0;  ///< [s of week]
};

struct ImportReport {
  std::vector<ImportedStrip> strips;
  std::vector<std::filesystem::path> trajectories;
  std::filesystem::path groundTruth;  ///< empty: none
  unsigned epsg = 0;
  std::size_t patches = 0, groundTruthPoints = 0;
};

/// Looks through all files before it writes anything; containers are written one by one.
/// @throws Error that names the value or the file and says what to do
VELORN_FLIGHT_EXPORT ImportReport importFlight(const ImportSettings& settings, const Watch& watch);

}  // namespace Velorn::Flights
