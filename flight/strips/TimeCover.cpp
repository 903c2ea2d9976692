// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/strips/TimeCover.h"

#include <cmath>

#include <fmt/format.h>

#include "flight/strips/GpsWeek.h"
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {
namespace {

constexpr double leapSeconds = 18.0, adjustment = 1e9;

bool fits(const TimeSpan& trajectory, const TimeSpan& strip, double shift) {
  return covers(trajectory, {strip.first + shift, strip.last + shift});
}

}  // namespace

std::string timesText(double first, double last, std::int64_t week) {
  return timesText(TimeSpan{first, last}, week);
}

std::string timesText(const TimeSpan& span, std::int64_t week) {
  return fmt::format("{:.3f} to {:.3f} s of week {}", span.first, span.last, week);
}

std::string likelyCause(const TimeSpan& trajectory, const TimeSpan& strip) {
  for (const double leap : {leapSeconds, -leapSeconds}) {
    if (!fits(trajectory, strip, leap)) continue;
    return fmt::format("; {:.0f} s of leap seconds would make them fit (UTC instead of GPS time?)",
                       leapSeconds);
  }
  for (const double shift : {adjustment, -adjustment}) {
    if (fits(trajectory, strip, shift)) {
      return "; 1e9 s would make them fit (adjusted standard time instead of GPS time?)";
    }
  }
  const double weeks = std::round((trajectory.first - strip.first) / weekSeconds);
  for (const double shift : {weeks - 1.0, weeks, weeks + 1.0}) {
    if (shift == 0.0 || !fits(trajectory, strip, shift * weekSeconds)) continue;
    return fmt::format("; {:+.0f} weeks would make them fit (another GPS week?)", shift);
  }
  if (strip.first > weekSeconds) return "; seconds of the week end at 604800";
  return {};
}

}  // namespace Velorn::Flights
