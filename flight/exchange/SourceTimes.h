// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether the points of a LAS file are still those that were imported.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "flight/formats/LasFile.h"

namespace Velorn::Flights {

/// Holds the times of some points against those that the import made of them, whatever the file's
/// times mean. A file that was sorted or filtered anew has others in these places.
/// @param numbers  of the points, counted from 0, ascending
/// @param times    one for each number [s of week]
/// @return the number of the first point with another time
std::optional<std::uint64_t> firstOtherTime(const LasFile& source,
                                            std::span<const std::uint64_t> numbers,
                                            std::span<const double> times);

}  // namespace Velorn::Flights
