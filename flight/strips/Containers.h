// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Writes the containers of a run from columns in memory, in the layout that docs/kx-format.md
// describes. Each file is written beside its target and renamed; an existing one is replaced.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

using Points = std::vector<Geomra::PhysicalSpace::point>;
using Vectors = std::vector<Geomra::PhysicalSpace::vector>;

/// The columns of one strip, one entry per point. An empty column becomes no field; the world
/// positions and the GPS times are always there.
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

/// Which surface each point of a strip fell on, in the order of the strip's points.
struct SurfaceColumns {
  Points positions;                  ///< true places on the surfaces [m]
  std::vector<std::uint32_t> plane;  ///< number of the plane
};

/// EPSG code of the ellipsoidal heights that belong to a UTM zone: of WGS84 in three dimensions, or
/// of ETRS89.
constexpr std::int64_t ellipsoidalHeightCode(std::uint32_t epsgSpatial) {
  return epsgSpatial >= 32601 ? 4979 : 4937;
}

/// @throws Error, naming the file: columns of unequal length, a file that cannot be written
/// @{
void saveStrip(const std::filesystem::path& file, StripColumns columns);
void saveTrajectory(const std::filesystem::path& file, TrajectoryColumns columns);
void saveGroundTruth(const std::filesystem::path& file, GroundTruthColumns columns);
void saveSurfaces(const std::filesystem::path& file, SurfaceColumns columns);
/// @}

}  // namespace Velorn::Flights
