// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether a trajectory was recorded while a strip was measured.
#pragma once

#include <cstdint>
#include <string>

namespace Velorn::Flights {

/// First and last time [s of week].
struct TimeSpan {
  double first = 0.0, last = 0.0;
};

/// Positions are interpolated after the trajectory's first record, up to its last one.
inline bool covers(const TimeSpan& trajectory, const TimeSpan& strip) {
  return strip.first > trajectory.first && strip.last <= trajectory.last;
}

/// "302410.123 to 302415.456 s of week 2318".
std::string timesText(const TimeSpan& span, std::int64_t week);

/// What usually lies behind times that a trajectory does not cover: leap seconds, weeks, or the 1e9
/// seconds of adjusted standard time.
/// @return "; " and the cause, or empty when none would make the strip fit
std::string likelyCause(const TimeSpan& trajectory, const TimeSpan& strip);

}  // namespace Velorn::Flights
