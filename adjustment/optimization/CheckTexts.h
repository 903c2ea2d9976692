// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the check of the correspondences writes besides the sections.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Velorn {

/// More correspondences than this are told as too many.
inline constexpr std::uint64_t mostCorrespondences = 40'000'000;

/// @param total  correspondences of all files
constexpr bool areTooMany(std::uint64_t total) {
  return total > mostCorrespondences;
}

/// The table of correspondences per terrain class.
/// @param counts   by class
/// @param weights  by class; a class without one shows "-"
std::string terrainHistogram(const std::vector<unsigned int>& counts,
                             const std::vector<double>& weights);

}  // namespace Velorn
