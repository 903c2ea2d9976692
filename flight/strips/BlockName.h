// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How the files of correspondence blocks are called: "c0_1.kx", "c0_7_GroundTruth.kx".
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Velorn::Flights {

struct BlockName {
  std::uint32_t i = 0, j = 0;  ///< file ids
  bool isGroundTruth = false;  ///< j is the ground truth
};

std::string fileNameOf(const BlockName& block);

/// @return empty for a file that is no block; an id that is too large becomes the largest
std::optional<BlockName> blockNameIn(const std::string& fileName);

}  // namespace Velorn::Flights
