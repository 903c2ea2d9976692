// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The companion of a parameter file: the same unknowns, bit by bit.
//
//     "VELORNEX"   8 bytes
//     version      4 bytes, 1
//     count        8 bytes, number of unknowns
//     unknowns     8 bytes each, IEEE 754
//     checksum     8 bytes, FNV-1a (64 bits) of all bytes before it
//
// All numbers are little endian.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Velorn {

/// "<parameter file>.exact"
std::filesystem::path companionOf(const std::filesystem::path& parameterFile);

/// The bytes of the companion.
std::string exactContent(const std::vector<double>& parameters);

/// Puts the companion's unknowns in the place of those that were read from the parameter file.
/// @param parameters  of the parameter file: each must be the companion's rounded to 15 decimals
/// @return empty, or "<companion>: <fault>"; `parameters` is then as before
std::string readExactParameters(const std::filesystem::path& companion,
                                std::vector<double>& parameters);

}  // namespace Velorn
