// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Inside this room only: which column of a text trajectory holds what, and what it can be.
#pragma once

#include <array>
#include <cstddef>
#include <numbers>
#include <optional>
#include <string>

namespace Velorn::Flights {

/// Something that a column holds.
struct TrajectoryQuantity {
  enum Kind { Plain, PositionAngle, AttitudeAngle };
  /// Places in the table below, and in TrajectoryColumnPlaces.
  enum Place : std::size_t {
    Time,
    Latitude,
    Longitude,
    Easting,
    Northing,
    Height,
    Roll,
    Pitch,
    Heading
  };

  const char* name;
  Kind kind;
  double lowest, highest;  ///< [m] or [rad]
  const char* hint;        ///< for a value out of range
};

// Eastings are bounded so tightly that neither degrees nor a northing is taken for one. Attitudes
// are bounded as in SBET files.
inline constexpr std::array trajectoryQuantities = [] {
  using std::numbers::pi;
  using Q = TrajectoryQuantity;
  return std::array{
      Q{"time", Q::Plain, -1e9, 2e9, ""},
      Q{"latitude", Q::PositionAngle, -pi / 2, pi / 2, ""},
      Q{"longitude", Q::PositionAngle, -pi, pi, ""},
      Q{"easting", Q::Plain, 1e3, 999e3,
        "; an easting comes without the number of its zone, and before the northing only where "
        "the columns say so"},
      Q{"northing", Q::Plain, -1e7, 1e7, ""},
      Q{"height", Q::Plain, -1e5, 1e5, ""},
      Q{"roll", Q::AttitudeAngle, -2 * pi, 2 * pi, ""},
      Q{"pitch", Q::AttitudeAngle, -2 * pi, 2 * pi, ""},
      Q{"heading", Q::AttitudeAngle, -4 * pi, 4 * pi, ""}};
}();

/// The column of each quantity, from 0 on; none where the file has no such column.
using TrajectoryColumnPlaces = std::array<std::optional<std::size_t>, trajectoryQuantities.size()>;

/// Reads the description of columns.
/// @throws Error for a word that is no quantity or is there twice, and for a missing quantity
TrajectoryColumnPlaces columnPlacesOf(const std::string& description);

}  // namespace Velorn::Flights
