// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Writes trajectories for other programs: SBET and delimited text. Files are written beside their
// target and renamed; an existing one is replaced.
#pragma once

#include <filesystem>
#include <vector>

#include "flight/formats/Sbet.h"

namespace Velorn::Flights {

/// Writes an SBET file: the values of the records as they are, zero for the wander angle,
/// velocities, accelerations and rates. What readSbet returns of it has the same bits; only a
/// heading of more than one turn, which other readers do not expect, is written less whole turns.
/// @throws Error, naming the file: no record; a value that is not finite (with the number of the
///         record); with Error::NoSpace, a file that cannot be written
void writeSbet(const std::filesystem::path& file, const std::vector<SbetRecord>& records);

/// Writes a line per record under a line of the columns' names: time [s of week], latitude,
/// longitude [degree], height [m], roll, pitch, heading [degree] (as above), easting, northing [m],
/// parted by commas. Numbers are the shortest that give the same bits; readTextTrajectory reads the
/// file with the format that it takes by default.
/// @param epsg  UTM zone of eastings and northings
/// @throws Error as above, and for a code that UTMfromEPSG does not know
void writeTextTrajectory(const std::filesystem::path& file, const std::vector<SbetRecord>& records,
                         unsigned epsg);

}  // namespace Velorn::Flights
