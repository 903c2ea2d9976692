// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a user may choose about a synthetic flight.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace Velorn::Flights::Simulation {

struct Options {
  std::uint64_t seed = 1;
  std::uint64_t points = 1'000'000;   ///< laser pulses in all; nearly each gives a point
  unsigned int strips = 5;            ///< parallel ones; two crossing strips are added
  double length = 1500.0;             ///< of a parallel strip [m]
  double height = 400.0;              ///< of the parallel strips above the ground [m]
  double rangeNoise = 0.02;           ///< standard deviation [m]
  double angleNoise = 0.0005;         ///< standard deviation of both angles [degree]
  bool slowErrors = true;             ///< trajectory errors that vary slowly, beside linear ones
  double errorScale = 1.0;            ///< factor on every injected error; the noise has its own
  std::string onlyErrors;             ///< the one kind of errors injected; empty for all kinds
  bool flatControl = false;           ///< ground truth on horizontal planes only
  std::uint32_t epsg = 32632;         ///< projection of the flight, a northern UTM zone
  std::uint64_t correspondences = 0;  ///< to write, at most; 0 for none

  /// Factor on the errors of one kind, a word of `onlyErrors`.
  double scaleOf(std::string_view kind) const {
    return onlyErrors.empty() || onlyErrors == kind ? errorScale : 0.0;
  }
};

/// The words of `onlyErrors`.
inline constexpr std::array<std::string_view, 6> errorKinds{"offsets",   "scales",   "misalignment",
                                                            "lever-arm", "position", "attitude"};

/// @throws Error, naming the option, its value and its bounds
void check(const Options& options);

}  // namespace Velorn::Flights::Simulation
