// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How much of a result is luck: the last matching is done again from starts beside the result, each
// is adjusted, and what a user reads is compared.
#pragma once

#include "flight/chain/RoundRules.h"
#include "flight/chain/RunContext.h"

namespace Velorn::Flights {

/// Four starts beside the result: the mounting turned and each strip shifted by three times the fit
/// of the pairs, in other directions each time (signs of a fractional factorial design, Box and
/// Hunter 1961, so that no correction changes together with another one). Nothing of it stays in
/// the folder of the run. Of a flight with many correspondences a part is matched.
/// @param surfaces  that the last round searched in
/// @throws Error
StabilityReport stabilityOf(RunContext& run, SurfaceStore& surfaces, const RoundReport& last);

/// What the starts do not agree about.
std::vector<std::string> warningsOf(const StabilityReport& stability);

}  // namespace Velorn::Flights
