// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The last step of a run: every strip georeferenced with the adjusted model.
#pragma once

#include "flight/chain/RoundRules.h"
#include "flight/chain/RunContext.h"

namespace Velorn::Flights {

/// Writes <strip>_SA.kx into the folder of adjusted strips, but for what an earlier run has.
/// @throws Error when a strip has a fault; the others are written
GeoreferencingReport georeferenceAll(const RunContext& run, const RoundModel& model,
                                     const Watch& watch);

}  // namespace Velorn::Flights
