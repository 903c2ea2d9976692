// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The first step of a run: normals, classes and rasters.
#pragma once

#include "flight/chain/RunContext.h"

namespace Velorn::Flights {

/// Rasterizes every strip and the ground truth, but for those that an earlier run has.
/// @throws Error that names the strip
RasterizingReport rasterizeAll(const RunContext& run);

}  // namespace Velorn::Flights
