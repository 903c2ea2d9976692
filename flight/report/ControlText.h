// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The patches of the ground truth as a table: where they lie, how they fit, which are left out.
#pragma once

#include <string>

#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// One row per patch; of more than a hundred those that are left out and those that fit worst.
/// @param matching    of the round that was adjusted
/// @param adjustment  may be null: not adjusted
/// @return empty without ground truth
std::string controlTable(const MatchReport& matching, const AdjustmentReport* adjustment);

}  // namespace Velorn::Flights
