// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads SBET files: trajectories as the processing of satellite and inertial data delivers them.
//
//     TrajectoryColumns columns =
//         trajectoryColumns(readSbet("flight.sbet"), 32632);
//
// The file has no header. A record is 17 little-endian doubles: time [s of week], latitude,
// longitude [rad], ellipsoidal height [m], 3 velocities, roll, pitch, platform heading, wander
// angle [rad], 3 accelerations, 3 angular rates.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <vector>

#include "flight/formats/DoubleRecords.h"
#include <velorn/flight/Containers.h>

namespace Velorn::Flights {

/// What of a record georeferencing needs.
struct SbetRecord {
  double time = 0.0;       ///< [s of week]; goes on beyond 604800 where the file's does
  double latitude = 0.0;   ///< [rad], positive to the north
  double longitude = 0.0;  ///< [rad], positive to the east
  double height = 0.0;     ///< ellipsoidal [m]
  double roll = 0.0;       ///< [rad]
  double pitch = 0.0;      ///< [rad]
  double heading = 0.0;    ///< [rad] from true north, clockwise: platform heading - wander angle
};

/// True for the endings that such files have: .sbet and .out, in any case of letters.
bool looksLikeSbet(const std::filesystem::path& file);

/// Hands the records to `take` one after the other, in the order of the file. Some thousand of them
/// are in memory at a time.
/// @return their number, at least 1
/// @throws Error as readDoubleRecords; a record has 136 bytes
std::size_t readSbet(const std::filesystem::path& file,
                     const std::function<void(const SbetRecord&)>& take,
                     TimeOrder order = TimeOrder::Ascending);

/// All records at once; 56 bytes each.
std::vector<SbetRecord> readSbet(const std::filesystem::path& file,
                                 TimeOrder order = TimeOrder::Ascending);

/// Projects the records, for a container that then needs week, lever arm and misalignment. The yaw
/// is continuous, since readers interpolate it as a plain number: each is less than half a turn
/// away from the one before, so that it may leave the range of one turn.
/// @param epsg  UTM zone of the northern hemisphere, as UTMfromEPSG takes it
/// @throws std::invalid_argument, naming the code, for another one
TrajectoryColumns trajectoryColumns(const std::vector<SbetRecord>& records, unsigned epsg);

}  // namespace Velorn::Flights
