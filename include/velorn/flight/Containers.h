// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The containers of a flight as columns in memory, read and written, in the layout that
// docs/kx-format.md describes. Each file is written beside its target and renamed; an existing one
// is replaced.
//
//     const auto strip = Velorn::Flights::loadStrip("strip_1_SA.kx");
//     for (std::size_t k = 0; k < strip.times.size(); ++k) use(strip.times[k], strip.world[k]);
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include <velorn/flight/Visibility.h>

namespace Velorn::Flights {

using Points = std::vector<Geomra::PhysicalSpace::point>;
using Vectors = std::vector<Geomra::PhysicalSpace::vector>;

/// The columns of one strip, one entry per point. An empty column is a field that the container
/// does not have; the world positions and the GPS times are always there.
struct StripColumns {
  std::int64_t week = 0;                   ///< GPS week
  Points world;                            ///< (easting, northing, ellipsoidal height) [m]
  Points scanner;                          ///< (down, forward, right) [m]
  std::vector<double> times;               ///< [s of week]
  Vectors directions;                      ///< from the point to the sensor, in the projection [m]
  Vectors normals;                         ///< unit normals of the world points
  std::vector<std::uint8_t> returnNumber;  ///< from 1 on
  std::vector<std::uint8_t> numberOfReturns;
  std::vector<std::uint8_t> classification;  ///< codes of the LAS format
  std::vector<double> amplitude;             ///< [dB], or as the instrument says it
  std::vector<std::uint16_t> pointSourceId;
  std::vector<std::uint64_t> sourceIndex;  ///< number of the record in the source file, from 0
  std::string sourceFile;                  ///< that the points were imported from; may be empty
};

/// The records of a trajectory and what is stored beside them.
struct TrajectoryColumns {
  std::int64_t week = 0;
  std::int64_t epsgSpatial = 0, epsgHeight = 0;
  Geomra::PhysicalSpace::point leverArm;      ///< body axes: forward, right, down [m]
  Geomra::PhysicalSpace::point misalignment;  ///< about the body's axes [degree]
  std::vector<double> times;                  ///< [s of week]
  Points positions;                           ///< projected, ellipsoidal height [m]
  std::vector<double> roll, pitch, yaw;       ///< [degree]; the yaw continuous
};

/// Points of known place on known planes.
struct GroundTruthColumns {
  Points positions;  ///< [m]
  Vectors normals;   ///< unit normals
  std::vector<std::uint8_t> classification;
};

/// The points of correspondences between two strips, or a strip and the ground truth: entry k of
/// one side corresponds to entry k of the other.
struct CorrespondenceColumns {
  /// Of one side; of the ground truth scanner coordinates, times and directions say nothing.
  struct Side {
    std::uint32_t week = 0;     ///< GPS week
    Points world, scanner;      ///< as in a strip [m]
    std::vector<double> times;  ///< [s of week]
    Vectors normals;            ///< unit normals of the surface
    Vectors directions;         ///< from the point to the sensor [m]
  };
  Side i, j;
  bool isGroundTruth = false;  ///< side j is the ground truth
  std::vector<std::uint8_t>
      classes;  ///< 10 ground truth, 11 roof, 12 slope, 13 bed points, 14 flat
};

/// EPSG code of the ellipsoidal heights that belong to a UTM zone: of WGS84 in three dimensions, or
/// of ETRS89.
constexpr std::int64_t ellipsoidalHeightCode(std::uint32_t epsgSpatial) {
  return epsgSpatial >= 32601 ? 4979 : 4937;
}

/// @throws Error, naming the file: columns of unequal length, a file that cannot be written
/// @{
VELORN_FLIGHT_EXPORT void saveStrip(const std::filesystem::path& file, StripColumns columns);
VELORN_FLIGHT_EXPORT void saveTrajectory(const std::filesystem::path& file,
                                         TrajectoryColumns columns);
VELORN_FLIGHT_EXPORT void saveGroundTruth(const std::filesystem::path& file,
                                          GroundTruthColumns columns);
/// @}

/// @throws Error, naming the file and the field: no container, no such field, one of another type
/// @{
VELORN_FLIGHT_EXPORT StripColumns loadStrip(const std::filesystem::path& file);
VELORN_FLIGHT_EXPORT CorrespondenceColumns loadCorrespondences(const std::filesystem::path& block);
/// @}

}  // namespace Velorn::Flights
