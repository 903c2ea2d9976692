// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How many correspondences an adjustment has room for.
#pragma once

#include <cstddef>

namespace Velorn::Flights {

/// What the solver holds at its peak, per correspondence.
inline constexpr std::size_t bytesOfSolver = 3000;

/// Bytes that a new program could have without swapping, as the system says; 0 when it does not
/// say.
std::size_t availableMemory();

}  // namespace Velorn::Flights
