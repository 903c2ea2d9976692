// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether an adjustment has enough correspondences for its unknowns, in words.
#pragma once

#include <string>
#include <vector>

#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// One for all unknowns together and one for each strip, where there are fewer than twenty
/// correspondences for each of them.
std::vector<std::string> redundancyWarnings(const AdjustmentReport& adjustment);

}  // namespace Velorn::Flights
