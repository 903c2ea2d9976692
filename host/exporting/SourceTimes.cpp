// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/exporting/SourceTimes.h"

#include <cmath>

#include "host/importing/GpsTimes.h"

namespace Exporting {
namespace {

using Importing::TimeKind;

constexpr double sameTime = 1e-6;  // [s]

/// @return false also for a time that is no number
bool agrees(double time, TimeKind kind, double secondsOfWeek) {
  return std::isfinite(time) &&
         std::abs(Importing::gpsTimeOf(time, kind, 0).seconds - secondsOfWeek) < sameTime;
}

std::optional<TimeKind> kindOf(double time, double secondsOfWeek) {
  for (const TimeKind kind :
       {TimeKind::secondsOfWeek, TimeKind::adjustedStandard, TimeKind::standard}) {
    if (agrees(time, kind, secondsOfWeek)) return kind;
  }
  return {};
}

}  // namespace

std::optional<std::uint64_t> firstOtherTime(const PointCloud::LasFile& source,
                                            std::span<const std::uint64_t> numbers,
                                            std::span<const double> times) {
  std::optional<TimeKind> kind;
  std::optional<std::uint64_t> other;
  std::size_t next = 0;
  source.read([&](std::uint64_t first, std::span<const PointCloud::LasPoint> points) {
    for (; next < numbers.size() && numbers[next] < first + points.size(); ++next) {
      const double time = points[numbers[next] - first].time;
      if (!kind) kind = kindOf(time, times[next]);
      if (!other && !(kind && agrees(time, *kind, times[next]))) other = numbers[next];
    }
  });
  return other;
}

}  // namespace Exporting
