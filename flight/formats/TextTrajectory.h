// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads trajectories from delimited text, as many processing programs export them:
//
//     TextTrajectoryFormat format;
//     format.columns = "time easting northing height roll pitch heading";
//     format.heading = NorthReference::Grid;
//     format.epsg = 32632;
//     const auto trajectory = readTextTrajectory("flight.txt", format);
//
// A line is a record. Blank lines, lines that begin with '#' or '%', and lines of words before the
// first record are passed over. Attitude is roll, pitch, heading of the body's axes (forward,
// right, down), the heading clockwise.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "flight/formats/Sbet.h"
#include <velorn/flight/TextTrajectoryFormat.h>

namespace Velorn::Flights {

struct TextTrajectory {
  /// In the order of the file; times in seconds of `week`, beyond 604800 behind its end.
  std::vector<SbetRecord> records;
  /// GPS week of the earliest time, where the times tell it.
  std::optional<std::int64_t> week;
  /// Degrees were said of the attitude, but no angle of the file is beyond 2 pi: right for a
  /// straight flight to the north, and for radians. A caller does well to ask.
  bool attitudeMayBeRadians = false;
};

/// Reads all records. Times of week that begin anew where a week ends go on beyond 604800.
/// @throws Error: for a format that cannot be, naming the word; for the file; and naming file,
///         number and text of a line with too few columns, a word that is no finite number, a value
///         out of its range (degrees where radians were said are), or a time more than a week away
///         from another. Latitudes and longitudes in degrees none of which is beyond pi/2 and pi
///         are refused, too: they are radians, or a place in the Gulf of Guinea.
TextTrajectory readTextTrajectory(const std::filesystem::path& file,
                                  const TextTrajectoryFormat& format);

}  // namespace Velorn::Flights
