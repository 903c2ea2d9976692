// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the steps of a run found, as parts of summary.json; docs/run.md describes them. Lengths are
// metres and angles degrees; a figure that is not known is null.
#pragma once

#include "flight/chain/Adjustment.h"
#include "flight/matching/Match.h"
#include "flight/records/StepRecord.h"
#include "flight/surfaces/Rasterize.h"

namespace Velorn::Flights {

Json reportOf(const RasterCounts& counts);
Json reportOf(const MatchReport& matching);
Json reportOf(const AdjustmentOutcome& outcome);

/// What the user is to know about the datum: what fixes it, and what nothing controls.
/// @param matching       report of the last matching
/// @param sectionLength  median of the strips that are not locked [s]; NaN: there is none
/// @return {"fixed_by": [text], "warnings": [text]}
Json datumOf(const Json& matching, const Velorn::InputParameter& configuration, bool isRelative,
             double sectionLength);

}  // namespace Velorn::Flights
