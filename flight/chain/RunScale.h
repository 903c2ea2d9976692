// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The lengths that a run works with where its settings leave them to the points.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "flight/records/RunFolder.h"
#include <velorn/flight/Reports.h>
#include <velorn/flight/Settings.h>

namespace Velorn::Flights {

/// Replaces the zeros among the settings by what suits the points of all strips; what an earlier
/// run measured of a strip that is unchanged is not measured again.
/// @param settings  complete
/// @return nothing, and no strip is read, where there are no zeros
/// @throws Error that names the strip
std::optional<ScaleReport> followPoints(const std::vector<std::string>& strips,
                                        const RunFolder& folder, FlightSettings& settings);

}  // namespace Velorn::Flights
