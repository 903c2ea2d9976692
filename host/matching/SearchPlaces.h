// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where the search takes points to be: georeferenced anew with the result of the round before.
#pragma once

#include <cstdint>
#include <filesystem>

#include "host/matching/Match.h"
#include "host/matching/MatchPoints.h"

namespace Matching {

/// Fills `searched`. Points whose time has no place on the trajectory or in the strip's sections,
/// and those that come out at no place, are taken from the list, with a message on the console.
/// @param file      named in messages
/// @param strip     id of the strip
/// @param solution  may be null: nothing happens
/// @throws Failure, naming the file, when the georeferencing refuses the rest
void searchWith(const Solution* solution, const std::filesystem::path& file, std::uint32_t strip,
                bool interpolationFlag, MatchPoints& points);

}  // namespace Matching
