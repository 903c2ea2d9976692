// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Fewer correspondences, spread evenly over what tells the unknowns apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

/// Shares out `total` as water fills vessels: each gets the same unless its capacity is lower. What
/// is left of the division goes to the largest, one each.
std::vector<std::size_t> waterFilled(const std::vector<std::size_t>& capacities, std::size_t total);

/// Which of some things are kept when there is room for `room` of them: the same number of each
/// stratum as far as it has them. Chance decides which ones, and which strata get one more; it
/// depends on the seed and the things' places in the list alone.
/// @param strata  of each thing, any numbers
/// @return places in the list, ascending
std::vector<std::uint32_t> thinned(const std::vector<std::uint64_t>& strata, std::size_t room,
                                   std::uint64_t seed);

/// The stratum of a surface element: class, slope (0 to 3, 10, 25 and 90°), aspect in eight sectors
/// for slopes above 3°.
/// @param normal  unit, upward
std::uint64_t stratumOf(std::uint8_t code, const Geomra::PhysicalSpace::vector& normal);

/// A seed for one of several uses of the same seed.
std::uint64_t derivedSeed(std::uint64_t seed, std::uint64_t first, std::uint64_t second);

}  // namespace Velorn::Flights
