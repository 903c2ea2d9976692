// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Strips of LAS files: what is known before their points are kept, their columns, and their
// measurements.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "flight/exchange/GpsTimes.h"
#include "flight/exchange/StripParts.h"
#include <velorn/Trajectory.h>
#include <velorn/flight/Containers.h>

namespace Velorn::Flights {

/// A file of points, looked through once.
struct LasFacts {
  std::filesystem::path file;
  std::uint64_t points = 0;
  double low = 0.0, high = 0.0;  ///< of its times, as they stand
  TimeReading times;
  std::optional<unsigned> epsg;  ///< of its projection, when it says so
  std::string crs;               ///< what it says
};

/// @throws Error, naming the file: none of that kind, no points, no times, one time for all
LasFacts lasFactsOf(const std::filesystem::path& file);

/// The points of a file, in its order.
struct LasColumns {
  Points places;
  std::vector<GpsTime> times;
  std::vector<std::uint16_t> intensity, sourceId;
  std::vector<std::uint8_t> returnNumber, numberOfReturns, classification;
};

/// Withheld points get class 7, so that nothing is matched with them.
/// @param weekOfSeconds  the week of times that are seconds of the week
LasColumns columnsOf(const LasFacts& facts, std::int64_t weekOfSeconds);

/// The columns of one strip of a file. Amplitudes are the file's intensities.
StripColumns stripOf(const LasColumns& columns, const StripPart& part,
                     const std::filesystem::path& source);

/// Adds the scanner coordinates and beams that the trajectory with its mounting makes of the
/// positions, so that georeferencing with them gives the positions again.
/// @throws Error when a point cannot be seen from the trajectory
void addMeasurements(StripColumns& strip, const Velorn::Trajectory& trajectory);

}  // namespace Velorn::Flights
