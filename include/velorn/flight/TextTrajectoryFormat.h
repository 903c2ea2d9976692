// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How a trajectory of delimited text is to be understood.
#pragma once

#include <optional>
#include <string>

namespace Velorn::Flights {

enum class AngleUnit { Degrees, Radians };

/// What a heading is counted from. With the meridian convergence of the zone at the place:
///   heading from true north = heading from grid north + convergence
enum class NorthReference { True, Grid };

/// What the times of a file count.
enum class TimeScale {
  /// By the first time: from 0 to two weeks it is of the week, from there to 7e8 s (and below zero)
  /// adjusted, beyond since 1980. This tells flights from 2002 to 2033 right.
  FoundOut,
  OfWeek,    ///< seconds of an unknown GPS week
  Gps,       ///< seconds since the begin of GPS time, 6 January 1980
  Adjusted,  ///< the same less 1e9 s: adjusted standard GPS time
};

/// How a trajectory of delimited text is to be understood.
struct TextTrajectoryFormat {
  /// The columns from the left, parted by blanks or commas: time, latitude and longitude or easting
  /// and northing, height, roll, pitch, heading; "-" for one to pass over. Lines may have more.
  std::string columns = "time latitude longitude height roll pitch heading";
  std::optional<char> delimiter;  ///< ';', ',', tab or ' ' (any blanks); by the first record
  AngleUnit positionUnit = AngleUnit::Degrees;  ///< of latitude and longitude
  AngleUnit attitudeUnit = AngleUnit::Degrees;
  NorthReference heading = NorthReference::True;
  TimeScale time = TimeScale::FoundOut;
  /// UTM zone of the northern hemisphere: of eastings and northings, and of headings from grid
  /// north. Not needed otherwise.
  std::optional<unsigned> epsg;
};

}  // namespace Velorn::Flights
