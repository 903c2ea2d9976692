// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/GpsTimes.h"

#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

namespace Velorn::Flights {
namespace {

// 1e9 s are 1653 weeks and 265600 s.
constexpr std::int64_t weeksOfAdjustment = 1653;
constexpr double restOfAdjustment = 265600.0;
constexpr double standardFrom = 1e9;
constexpr double adjustedFrom = -1e9;  // 1980

}  // namespace

TimeReading readingOf(double low, double high, bool saysAdjusted) {
  if (!std::isfinite(low) || !std::isfinite(high)) {
    throw std::invalid_argument("a GPS time is no number");
  }
  const bool canBeOfWeek = low >= 0.0 && high <= 2.0 * weekSeconds;
  if (canBeOfWeek) {
    return {TimeKind::secondsOfWeek,
            saysAdjusted
                ? "the header promises adjusted standard time, but the times are taken for "
                  "seconds of the week: as the former they would be of September 2011"
                : ""};
  }
  if (low >= standardFrom && high < 2.0 * standardFrom) {
    return {TimeKind::standard,
            "the times are taken for GPS seconds since 1980 from which 1e9 was not subtracted"};
  }
  if (low >= adjustedFrom && high < standardFrom) {
    return {TimeKind::adjustedStandard,
            saysAdjusted ? ""
                         : "the header promises seconds of the week, but the times are taken for "
                           "adjusted standard time"};
  }
  throw std::invalid_argument(
      fmt::format("times from {} to {} are neither seconds of a week nor GPS seconds", low, high));
}

GpsTime gpsTimeOf(double time, TimeKind kind, std::int64_t weekOfSeconds) {
  const bool isAdjusted = kind == TimeKind::adjustedStandard;
  const double rest = isAdjusted ? restOfAdjustment : 0.0;
  double weeks = std::floor((time + rest) / weekSeconds);
  double seconds = time - weeks * weekSeconds + rest;
  if (seconds < 0.0 || seconds >= weekSeconds) {  // the quotient was rounded over a border
    const double step = seconds < 0.0 ? -1.0 : 1.0;
    weeks += step;
    seconds -= step * weekSeconds;
  }
  const std::int64_t first = isAdjusted                        ? weeksOfAdjustment
                             : kind == TimeKind::secondsOfWeek ? weekOfSeconds
                                                               : 0;
  return {first + static_cast<std::int64_t>(weeks), seconds};
}

}  // namespace Velorn::Flights
