// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A priori knowledge of the scanner's corrections and of the mounting: they are what was delivered,
// within standard deviations.
#pragma once

#include <array>
#include <vector>

#include "adjustment/stochastics/LinearSum.h"

namespace Velorn {

/// Blocks of three, in the order of the vector of unknowns.
enum class GlobalBlock { Offsets, Scales, Misalignment, LeverArm };

inline constexpr std::array globalBlocks{GlobalBlock::Offsets, GlobalBlock::Scales,
                                         GlobalBlock::Misalignment, GlobalBlock::LeverArm};

/// Standard deviations by block: range [m] and both angles [rad]; their scales [-]; roll, pitch and
/// yaw [rad]; lever arm [m]. Infinite where nothing is known.
using GlobalSigmas = std::array<std::array<double, 3>, globalBlocks.size()>;

/// (x − delivered) / σ of the unknowns of one block whose σ is finite.
/// @param delivered     what the unknowns are expected to be, in their units
/// @param firstUnknown  place of the block in the vector of unknowns
/// @throws std::invalid_argument, naming it, for a σ that is not above 0 or a value that is not
///         finite
PriorRows globalPriorRows(const std::array<double, 3>& sigmas,
                          const std::array<double, 3>& delivered, Eigen::Index firstUnknown);

/// Place of a block's first unknown in the vector of unknowns.
Eigen::Index firstUnknownOf(GlobalBlock block, std::size_t sections);

}  // namespace Velorn
