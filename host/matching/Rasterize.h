// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Normals and terrain classes of a strip's points, and its raster: one point per cell and class.
//
//     const RasterCounts counts = rasterizeStrip(strip, raster, configuration, options, progress);
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>

#include "platform/kestrum/LoaderProgress.h"
#include <velorn/InputParameter.h>

namespace Matching {

/// What a surface element is, beside what the configuration says.
struct RasterOptions {
  unsigned int neighbours = 16;  ///< points that a plane is fitted to, the point itself included
  double neighbourRadius = 5.0;  ///< they lie within [m]
  double maxRoughness = 0.1;     ///< of a planar neighbourhood, however rough those about it [m]
  double slopeLimit = 3.0;       ///< ground steeper than that is a slope [degree]
};

/// Points by the class index: ground truth, roof, slope, bed points, flat.
using PerClass = std::array<std::size_t, 5>;

/// Where the points of a strip went.
struct RasterCounts {
  std::size_t points = 0;
  std::size_t notFinite = 0;     ///< a coordinate or the time is not finite
  std::size_t notLast = 0;       ///< an echo that is not the last of its pulse
  std::size_t notPlanar = 0;     ///< no plane through the neighbours, or a rough one
  std::size_t notTerrain = 0;    ///< vegetation, water, noise and the like by the file's classes
  std::size_t notSelected = 0;   ///< by the selection or the amplitude limits
  PerClass surface{};            ///< the rest: planar points of each class
  PerClass representatives{};    ///< of these, those in the raster
  double medianRoughness = 0.0;  ///< of the planar points [m]; 0 without any
};

/// Writes normals and classes into the strip, and the raster. What the owner of the strip wrote in
/// their place is kept under other names. The strip is replaced first; both are written beside
/// their target and renamed. The same for any number of threads.
/// @param configuration  checked; cell sizes, amplitude limits and selection count
/// @throws Failure, naming the strip, for one that cannot be used or written
RasterCounts rasterizeStrip(const std::filesystem::path& strip, const std::filesystem::path& raster,
                            const Velorn::InputParameter& configuration,
                            const RasterOptions& options, Kestrum::LoaderProgress& progress);

/// Writes the raster of the ground truth: the point nearest the centroid of each cell.
RasterCounts rasterizeGroundTruth(const std::filesystem::path& groundTruth,
                                  const std::filesystem::path& raster,
                                  const Velorn::InputParameter& configuration);

/// Looks for what can be known before any work: an expression that is none, options beyond sense.
/// @throws Failure that names the option or shows the place in the expression
void check(const Velorn::InputParameter& configuration, const RasterOptions& options);

}  // namespace Matching
