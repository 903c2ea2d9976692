// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a user may have meant by a name that is none.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace CommandLine {

/// Letters inserted, left out, replaced, or swapped with their neighbour that make one text of the
/// other, where no letter is touched twice.
std::size_t editDistance(std::string_view first, std::string_view second);

/// The name that a mistyped one is nearest to, case aside: of those that differ in up to a third of
/// their letters the first of the nearest; else the first that it is the beginning of.
/// @return empty when there is none
std::string nearestOf(const std::vector<std::string>& names, std::string_view typed);

/// "; did you mean NAME?", or nothing of an empty name.
std::string didYouMean(const std::string& name);

}  // namespace CommandLine
