// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads how good a trajectory is, as the processing of satellite and inertial data tells it beside
// the trajectory itself (a file smrmsg).
//
//     const auto records = readAccuracy("smrmsg_flight.out");
//     if (const auto sigma = accuracyOver(records, strip.first, strip.last)) ...
//
// The file has no header. A record is 10 little-endian doubles: time [s of week], root mean square
// errors of the position north, east and down [m], of the velocity [m/s], and of roll, pitch and
// heading [minutes of arc].
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace Velorn::Flights {

/// Standard deviations of a trajectory.
struct TrajectoryAccuracy {
  std::array<double, 3> position{};  ///< east, north, height [m]
  std::array<double, 3> attitude{};  ///< roll, pitch, yaw [rad]
};

struct AccuracyRecord {
  double time = 0.0;  ///< [s of week]; goes on beyond 604800 where the file's does
  TrajectoryAccuracy accuracy;
};

/// All records, in the order of the file whatever their times.
/// @throws Error that names the file, and the first bad record counted from 1: no regular file;
///         empty; a size that is no multiple of 80 bytes; a value that is not finite or is none of
///         its kind, as an error of 1 km or half a turn (files of the other byte order are named as
///         such); times that begin anew where a GPS week ends
std::vector<AccuracyRecord> readAccuracy(const std::filesystem::path& file);

/// Root mean square of the standard deviations over a time, ends included.
/// @param first, last  [s], as the records' times
/// @return             nothing without a record in it
std::optional<TrajectoryAccuracy> accuracyOver(std::span<const AccuracyRecord> records,
                                               double first, double last);

}  // namespace Velorn::Flights
