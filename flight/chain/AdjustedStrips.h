// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The last step of a run: every strip georeferenced with the adjusted model.
#pragma once

#include "flight/chain/Adjustment.h"
#include "flight/chain/RunContext.h"

namespace Velorn::Flights {

/// Name of the folder of adjusted strips in the root.
inline constexpr const char* adjustedFolder = "05_adjusted";

/// Writes <strip>_SA.kx into the folder of adjusted strips, but for what an earlier run has.
/// @param modelKey  what the model depends on
/// @return {"folder", "strips", "points", "skipped", "seconds"}
/// @throws Error when a strip has a fault; the others are written
Json georeferenceAll(const RunContext& run, const ModelFiles& model, const Json& modelKey);

}  // namespace Velorn::Flights
