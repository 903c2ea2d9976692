// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The planar points of a strip with their normals and terrain classes, and its raster: one of them
// per cell and class.
//
//     const RasterCounts counts = rasterizeStrip({strip, planar, raster}, configuration, options,
//     progress);
#pragma once

#include <cstdint>
#include <filesystem>

#include "flight/surfaces/Solution.h"
#include "flight/surfaces/StripScale.h"
#include "flight/surfaces/SurfaceStore.h"
#include "platform/kestrum/LoaderProgress.h"
#include <velorn/InputParameter.h>
#include <velorn/flight/Reports.h>
#include <velorn/flight/Settings.h>

namespace Velorn::Flights {

/// How a strip is looked at in the coarse rounds and those after them.
struct StripView {
  std::uint32_t strip = 0;             ///< file id
  const Solution* solution = nullptr;  ///< that places the points; none: as delivered
  double side = 1.0;                   ///< of the cubes of which one point each counts [m]
};

/// Writes the two files of a strip, which stays as it is; each is written beside its target and
/// renamed. The same for any number of threads.
/// @param configuration  checked; cell sizes, amplitude limits and selection count
/// @param view           its solution places the points; all of them count
/// @throws Error, naming the strip, for one that cannot be used, or a file that cannot be written
RasterCounts rasterizeStrip(const SurfaceFiles& files, const Velorn::InputParameter& configuration,
                            const RasterSettings& options, Kestrum::LoaderProgress& progress,
                            const StripView& view = {});

/// Rasterizes a strip as the view has it. The raster holds all planar points, so that partners may
/// be searched in it as well.
/// Positions are the delivered ones; planes, normals and classes those of the places in the view.
RasterCounts rasterizeView(const std::filesystem::path& strip, const StripView& view,
                           const std::filesystem::path& raster,
                           const Velorn::InputParameter& configuration,
                           const RasterSettings& options, Kestrum::LoaderProgress& progress);

/// Of the last echoes of a strip.
StripScale scaleOfStrip(const std::filesystem::path& strip,
                        const Velorn::InputParameter& configuration);

/// How far neighbouring last echoes of a strip are apart [m], see `spacingOf`.
/// @param radius  within which 16 points are expected [m]
double spacingOfStrip(const std::filesystem::path& strip,
                      const Velorn::InputParameter& configuration, double radius);

/// Writes the raster of the ground truth: the point nearest the centroid of each cell.
RasterCounts rasterizeGroundTruth(const std::filesystem::path& groundTruth,
                                  const std::filesystem::path& raster,
                                  const Velorn::InputParameter& configuration);

/// Looks for what can be known before any work and no bounds tell: an expression that is none,
/// lists that do not fit the classes.
/// @throws Error that names the class or shows the place in the expression
void check(const Velorn::InputParameter& configuration);

}  // namespace Velorn::Flights
