// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/SourceTimes.h"

#include <cmath>

#include "flight/exchange/GpsTimes.h"

namespace Velorn::Flights {
namespace {

constexpr double sameTime = 1e-6;  // [s]

/// @return false also for a time that is no number
bool agrees(double time, TimeKind kind, double secondsOfWeek) {
  return std::isfinite(time) &&
         std::abs(gpsTimeOf(time, kind, 0).seconds - secondsOfWeek) < sameTime;
}

std::optional<TimeKind> kindOf(double time, double secondsOfWeek) {
  for (const TimeKind kind :
       {TimeKind::secondsOfWeek, TimeKind::adjustedStandard, TimeKind::standard}) {
    if (agrees(time, kind, secondsOfWeek)) return kind;
  }
  return {};
}

}  // namespace

std::optional<std::uint64_t> firstOtherTime(const LasFile& source,
                                            std::span<const std::uint64_t> numbers,
                                            std::span<const double> times) {
  std::optional<TimeKind> kind;
  std::optional<std::uint64_t> other;
  std::size_t next = 0;
  source.read([&](std::uint64_t first, std::span<const LasPoint> points) {
    for (; next < numbers.size() && numbers[next] < first + points.size(); ++next) {
      const double time = points[numbers[next] - first].time;
      if (!kind) kind = kindOf(time, times[next]);
      if (!other && !(kind && agrees(time, *kind, times[next]))) other = numbers[next];
    }
  });
  return other;
}

}  // namespace Velorn::Flights
