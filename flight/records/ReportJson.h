// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The reports of a run as JSON, written and read: the one place that knows how they look in
// summary.json and in the records of steps. docs/run.md describes it. A figure that is not known is
// null.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "flight/surfaces/StripScale.h"
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// Of a step, for its record.
/// @{
nlohmann::ordered_json jsonOf(const RasterCounts& counts);
nlohmann::ordered_json jsonOf(const ApartReport& apart);
nlohmann::ordered_json jsonOf(const StripScale& scale);
nlohmann::ordered_json jsonOf(const MatchReport& matching);
nlohmann::ordered_json jsonOf(const RoundReport& round);
nlohmann::ordered_json jsonOf(const StabilityReport& stability);
nlohmann::ordered_json jsonOf(const GeoreferencingReport& georeferencing);
/// @}

/// What summary.json holds, with its schema and version.
nlohmann::ordered_json jsonOf(const RunReport& run);

/// The same back into a report.
/// @throws nlohmann::json::exception for what no such report gives
/// @{
void fromJson(const nlohmann::ordered_json& json, RasterCounts& counts);
void fromJson(const nlohmann::ordered_json& json, ApartReport& apart);
void fromJson(const nlohmann::ordered_json& json, StripScale& scale);
void fromJson(const nlohmann::ordered_json& json, MatchReport& matching);
void fromJson(const nlohmann::ordered_json& json, RoundReport& round);
void fromJson(const nlohmann::ordered_json& json, StabilityReport& stability);
void fromJson(const nlohmann::ordered_json& json, GeoreferencingReport& georeferencing);
void fromJson(const nlohmann::ordered_json& json, RunReport& run);
/// @}

}  // namespace Velorn::Flights
