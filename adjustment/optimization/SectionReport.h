// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How well the sections of all strips are observed, as a text for people.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include <velorn/AdjustmentResult.h>
#include <velorn/CeresOptimization.h>
#include <velorn/Section.h>

namespace Velorn {

/// A section with fewer correspondences is held constant.
inline constexpr unsigned int fewestCorrespondences = 100;

/// The state of every section, strip by strip in order of time.
/// @param correspondences  by section number
std::vector<SectionState> sectionStates(const std::vector<StripSections>& strips,
                                        const std::vector<unsigned int>& correspondences,
                                        const std::set<int>& lockedStrips,
                                        unsigned int fewest = fewestCorrespondences);

/// One line per section.
std::string sectionListing(const std::vector<SectionState>& states);

/// How many unknowns of the sections and of the whole flight an adjustment estimates.
int estimatedUnknowns(const std::vector<SectionState>& states, const AdjustmentSettings& settings);

/// Strips with a section that is held constant, ascending, each once.
std::vector<std::uint32_t> stripsHeldConstant(const std::vector<SectionState>& states);

}  // namespace Velorn
