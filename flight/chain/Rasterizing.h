// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The first step of a run: planar points and rasters.
#pragma once

#include "flight/chain/RunContext.h"

namespace Velorn::Flights {

/// Rasterizes every strip and the ground truth, but for those that an earlier run has.
/// @throws Error that names the strip
RasterizingReport rasterizeAll(RunContext& run);

/// Of what rasterizing is asked for, without the strips.
StepKey rasterKey(const FlightSettings& settings);

/// Refuses planar points and rasters that are not those which rasterizing left for these strips.
/// @throws Error that names the file
void requireSurfaces(const RunContext& run);

}  // namespace Velorn::Flights
