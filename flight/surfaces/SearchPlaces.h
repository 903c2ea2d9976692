// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where the search takes points to be: georeferenced anew with the result of the round before.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include "flight/surfaces/MatchPoints.h"
#include "flight/surfaces/Solution.h"

namespace Velorn::Flights {

/// Fills `searched`. Points whose time has no place on the trajectory or in the strip's sections,
/// and those that come out at no place, are taken from the list, with a message on the console.
/// @param file      named in messages
/// @param strip     id of the strip
/// @param solution  may be null: nothing happens
/// @throws Error, naming the file, when the georeferencing refuses the rest
void searchWith(const Solution* solution, const std::filesystem::path& file, std::uint32_t strip,
                bool interpolationFlag, MatchPoints& points);

/// What is measured of the points of a strip.
struct MeasuredPoints {
  std::span<const point> scanner;  ///< (down, forward, right) [m]
  std::span<const double> times;   ///< [s of week]
  std::uint32_t week;
};

/// The places of all points by the result; NaN for those that `searchWith` would take from a list.
/// @throws Error, naming the file, when the georeferencing refuses the rest
std::vector<point> placesBy(const Solution& solution, const std::filesystem::path& file,
                            std::uint32_t strip, bool interpolationFlag,
                            const MeasuredPoints& points);

}  // namespace Velorn::Flights
