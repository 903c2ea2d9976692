// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How the vector of unknowns is laid out, and how large it may become.
#pragma once

#include <cstddef>

namespace Velorn {

inline constexpr std::size_t localParameters = 24;  ///< per section: 12 of position, 12 of angles
inline constexpr std::size_t positionParameters = 12;  ///< the first of them
inline constexpr std::size_t globalParameters = 12;
inline constexpr std::size_t globalBlock = 3;  ///< offsets, scales, misalignment or lever arm

/// A hundredth of a second over a whole day has 8.6 million sections. More are a slip in the
/// interval; ten million already take 3 GB.
inline constexpr std::size_t mostSections = 10'000'000;

constexpr std::size_t numberOfParameters(std::size_t sections) {
  return localParameters * sections + globalParameters;
}

}  // namespace Velorn
