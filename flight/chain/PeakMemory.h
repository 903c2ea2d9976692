// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace Velorn::Flights {

/// Most bytes that this process has held so far.
std::uint64_t peakMemory();

}  // namespace Velorn::Flights
