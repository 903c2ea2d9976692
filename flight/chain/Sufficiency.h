// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether there are enough correspondences, and whether they lie and look where they are needed.
#pragma once

#include <filesystem>
#include <set>
#include <vector>

#include <velorn/AdjustmentResult.h>
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// @param which  blocks, named in the message
/// @throws Error for fewer than five correspondences per estimated unknown, or than thirty
void requireEnough(const Velorn::SolverEnd& end, const std::filesystem::path& which);

/// Warns of an adjustment, or a strip, with fewer than twenty correspondences per estimated
/// unknown, of a class with fewer than twenty, of strips whose correspondences span less than half
/// of their time, and of those that see hardly a slope in some direction. Locked strips need none.
/// @param round   the last one, with a matching
/// @param locked  ids of strips
void addSufficiencyWarnings(const RoundReport& round, const std::vector<StripFacts>& strips,
                            const std::set<int>& locked, DatumReport& datum);

}  // namespace Velorn::Flights
