// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether the ground truth fits the adjusted strips as well as they fit each other.
#pragma once

#include <string>
#include <vector>

#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// Warns of single patches far off the others or of low weight, and of ground truth that fits much
/// worse than the pairs of strips do, or than it did in the round before. Says nothing where the
/// patches are not known.
/// @param model  of the sections, named in the warnings
void addControlWarnings(const std::vector<RoundReport>& rounds, const std::string& model,
                        DatumReport& datum);

}  // namespace Velorn::Flights
