// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The candidates of a matched pair as rows for people.
#pragma once

#include <vector>

#include "flight/matching/Match.h"
#include "flight/surfaces/Solution.h"
#include <velorn/flight/CorrespondenceRow.h>

namespace Velorn::Flights {

/// One row per candidate, in their order.
/// @param adjusted           the model that the round led to; null: none
/// @param interpolationFlag  of the configuration
/// @throws Error that names the file
std::vector<CorrespondenceRow> rowsOf(const MatchedPair& pair, const Solution* adjusted,
                                      bool interpolationFlag);

}  // namespace Velorn::Flights
