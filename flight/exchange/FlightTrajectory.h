// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The trajectory of a flight from files of the field, and its containers.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "flight/formats/Sbet.h"
#include "flight/formats/TextTrajectory.h"
#include "flight/strips/TimeCover.h"
#include <velorn/flight/Import.h>

namespace Velorn::Flights {

/// Poses of a flight in order of time.
struct FlightTrajectory {
  std::vector<SbetRecord> records;   ///< times go on beyond the end of the first week
  std::optional<std::int64_t> week;  ///< of the first record, when a file says it
};

/// Reads all files and puts their records in order.
/// @param epsg  projection of the strips, and of what a text file projects
/// @param tell  receives what was repaired
FlightTrajectory readTrajectory(const TrajectorySource& source, unsigned epsg,
                                const std::function<void(const std::string&)>& tell);

/// A container for each GPS week that the records reach, "trajectory.kx" or
/// "trajectory_<week>.kx". Each goes on for some seconds beyond its week's ends, where the
/// interpolation needs the records of its neighbour.
/// @return their paths
std::vector<std::filesystem::path> saveTrajectories(
    const FlightTrajectory& trajectory, std::int64_t week, unsigned epsg,
    const Geomra::PhysicalSpace::point& leverArm, const Geomra::PhysicalSpace::point& misalignment,
    const std::filesystem::path& folder);

}  // namespace Velorn::Flights
