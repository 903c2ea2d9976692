// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What an adjustment says of what was known before it.
#pragma once

#include <string>
#include <vector>

#include <velorn/APrioriKnowledge.h>
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// Warnings of corrections that nobody would have expected, with what they could be.
std::vector<std::string> surprises(const AdjustmentReport& adjustment,
                                   const Velorn::APrioriKnowledge& knowledge);

/// The global corrections that come from what was known before rather than from this flight, in
/// words; empty where there are none.
std::string knownBefore(const AdjustmentReport& adjustment);

}  // namespace Velorn::Flights
