// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The points of strips, rasters and ground truth that may be matched.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

#include "flight/strips/GridFile.h"
#include "flight/surfaces/TerrainClasses.h"
#include "platform/geomra/PhysicalSpace.h"
#include <velorn/DataBlock.h>
#include <velorn/InputParameter.h>
#include <velorn/SphericalBeing.h>

namespace Velorn::Flights {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

/// Codes of the classes that are matched, from roof to flat.
inline constexpr std::uint8_t firstCode = codeOf(Velorn::TerrainType::ROOF),
                              lastCode = codeOf(Velorn::TerrainType::FLAT);

/// Numbers of points in their strip, from 0.
inline constexpr const char* numbersName = "PointNumber";
inline constexpr CountedField countedByNumbers{numbersName, Strandel::ValueType::UInt32};

/// Points of one strip in its order, one entry per point in every column that is not said to be
/// empty.
struct MatchPoints {
  std::vector<point> delivered;            ///< as in the file [m]
  std::vector<point> searched;             ///< by the result of the round before [m]; empty: none
  std::vector<point> scanner;              ///< (down, forward, right) [m]
  std::vector<double> times;               ///< [s of week]
  std::vector<vector> normals, beams;      ///< of the surface, and from the point to the sensor
  std::vector<std::uint8_t> codes;         ///< of the class, 11 to 14
  std::vector<double> roughness, heights;  ///< of the neighbourhoods' planes, and signed distance
                                           ///< of the point from its own [m]
  std::uint32_t week = 0;

  std::size_t size() const { return delivered.size(); }
  /// Where the search takes the points to be.
  const std::vector<point>& places() const { return searched.empty() ? delivered : searched; }
  /// The point as it stands in its file.
  Velorn::SphericalBeing being(std::size_t k) const {
    return {delivered[k], scanner[k], times[k], normals[k], beams[k], codes[k]};
  }
  /// Keeps the points whose numbers are listed, in ascending order.
  void keep(const std::vector<std::uint32_t>& numbers);
  /// The points whose numbers are listed, in ascending order.
  MatchPoints at(const std::vector<std::uint32_t>& numbers) const;
  /// That all columns take.
  std::size_t bytes() const;
};

/// All points of a container; class 0 where it has no classification.
/// @throws Error that names the file
Velorn::DataBlock blockOf(const GridFile& file);

/// Takes a point by its delivered place; called on all threads.
using Wanted = std::function<bool(const point&)>;

/// Numbers of the points that are wanted.
std::vector<std::uint32_t> numbersOf(const MatchPoints& points, const Wanted& wanted);

/// Leaves out points of no matchable class, and those with a coordinate that no place has, or a
/// beam or time that is not finite, of which the console is told.
/// @param file  for the message
void keepSound(const std::filesystem::path& file, MatchPoints& points);

/// Places, scanner coordinates, times and beams of some points of a strip.
/// @param numbers  ascending
/// @throws Error that names the file
void addMeasured(const GridFile& strip, std::span<const std::uint32_t> numbers,
                 MatchPoints& points);

/// The sound points of a strip that lie on planar surfaces; roughness and heights are empty.
/// @param planar  what rasterizing found of them
/// @throws Error that names the file, also where it numbers points that the strip does not have
MatchPoints readPlanarPoints(const std::filesystem::path& planar,
                             const std::filesystem::path& strip,
                             const Velorn::InputParameter& configuration);

/// The sound points of a raster.
/// @throws Error that names the file
MatchPoints readMatchPoints(const std::filesystem::path& file,
                            const Velorn::InputParameter& configuration);

/// The points of a raster of ground truth.
struct KnownPoints {
  std::vector<point> places;        ///< [m]
  std::vector<vector> normals;      ///< unit normals
  std::vector<std::uint8_t> codes;  ///< as the file has them
};

/// Points that have no place, or no normal, are left out, with a message on the console.
/// @throws Error that names the file; an empty container is none
KnownPoints readGroundTruth(const std::filesystem::path& file,
                            const Velorn::InputParameter& configuration);

}  // namespace Velorn::Flights
