// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The first step of a run: normals, classes and rasters.
#pragma once

#include "flight/chain/RunContext.h"

namespace Velorn::Flights {

/// Rasterizes every strip and the ground truth, but for those that an earlier run has.
/// @return {"strips": [{"name", "skipped", counts}], "ground_truth": counts, "seconds"}
/// @throws Error that names the strip
Json rasterizeAll(const RunContext& run);

}  // namespace Velorn::Flights
