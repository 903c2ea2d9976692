// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the times of point files mean: seconds of a GPS week, GPS seconds, or these less 1e9.
#pragma once

#include <cstdint>
#include <string>

#include "flight/strips/GpsWeek.h"

namespace Velorn::Flights {

enum class TimeKind {
  secondsOfWeek,
  adjustedStandard,  ///< seconds since 1980-01-06, less 1e9
  standard           ///< seconds since 1980-01-06, leap seconds not counted
};

/// What the times of a file mean.
struct TimeReading {
  TimeKind kind;
  std::string warning;  ///< empty unless the file's header says something else
};

/// By the header's word and by what is plausible: seconds of a week lie from 0 to two weeks (a
/// flight may cross its end), adjusted standard times do so only of September 2011; those of 2043
/// and later are taken for unadjusted ones.
/// @param low, high     range of the file's times
/// @param saysAdjusted  the header's bit for adjusted standard time
/// @throws std::invalid_argument for times that are none of these, or not finite
TimeReading readingOf(double low, double high, bool saysAdjusted);

struct GpsTime {
  std::int64_t week = 0;
  double seconds = 0.0;  ///< of the week
};

/// Without rounding as far as the difference has digits.
/// @param weekOfSeconds  the week of a time that is seconds of the week; such a time may lie beyond
///                       its end
GpsTime gpsTimeOf(double time, TimeKind kind, std::int64_t weekOfSeconds);

}  // namespace Velorn::Flights
