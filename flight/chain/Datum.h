// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What fixes a block in space, and what nothing controls.
#pragma once

#include <vector>

#include <velorn/flight/Reports.h>
#include <velorn/flight/Settings.h>

namespace Velorn::Flights {

/// @param matching  of the last round
DatumReport datumOf(const MatchReport& matching, const FlightSettings& settings,
                    const std::vector<StripFacts>& strips);

}  // namespace Velorn::Flights
