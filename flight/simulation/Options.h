// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What may be chosen about a synthetic flight.
#pragma once

#include <array>
#include <string_view>

#include <velorn/flight/Simulate.h>

namespace Velorn::Flights::Simulation {

/// Factor on the errors of one kind, a word of `onlyErrors`.
inline double scaleOf(const SimulationSettings& settings, std::string_view kind) {
  const bool isInjected = settings.onlyErrors.empty() || settings.onlyErrors == kind;
  return isInjected ? settings.errorScale : 0.0;
}

/// The words of `onlyErrors`.
inline constexpr std::array<std::string_view, 6> errorKinds{"offsets",   "scales",   "misalignment",
                                                            "lever-arm", "position", "attitude"};

/// @throws Error, naming the option, its value and its bounds
void check(const SimulationSettings& options);

}  // namespace Velorn::Flights::Simulation
