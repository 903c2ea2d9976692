// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The class byte of a correspondence.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Velorn {

/// Code of the ground truth; the other terrain types follow.
inline constexpr std::uint8_t firstClassCode = 10;

/// Place of a class in the per-class lists of the configuration; beyond all of them for a code
/// that is none.
constexpr std::size_t classIndex(std::uint8_t code) {
  return code < firstClassCode ? SIZE_MAX : std::size_t{code} - firstClassCode;
}

}  // namespace Velorn
