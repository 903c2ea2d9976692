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

enum class Kind { Plain, PositionAngle, AttitudeAngle };

/// Something that a column holds.
struct Quantity {
  const char* name;
  Kind kind;
  double lowest, highest;  ///< [m] or [rad]
  const char* hint;        ///< for a value out of range
};

/// Places of the quantities in the table, and in ColumnPlaces.
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

using std::numbers::pi;

// Eastings are bounded so tightly that neither degrees nor a northing is taken for one. Attitudes
// are bounded as in SBET files.
inline constexpr std::array quantities{
    Quantity{"time", Kind::Plain, -1e9, 2e9, ""},
    Quantity{"latitude", Kind::PositionAngle, -pi / 2, pi / 2, ""},
    Quantity{"longitude", Kind::PositionAngle, -pi, pi, ""},
    Quantity{
        "easting", Kind::Plain, 1e3, 999e3,
        "; an easting comes without the number of its zone, and before the northing only where "
        "the columns say so"},
    Quantity{"northing", Kind::Plain, -1e7, 1e7, ""},
    Quantity{"height", Kind::Plain, -1e5, 1e5, ""},
    Quantity{"roll", Kind::AttitudeAngle, -2 * pi, 2 * pi, ""},
    Quantity{"pitch", Kind::AttitudeAngle, -2 * pi, 2 * pi, ""},
    Quantity{"heading", Kind::AttitudeAngle, -4 * pi, 4 * pi, ""}};

/// The column of each quantity, from 0 on; none where the file has no such column.
using ColumnPlaces = std::array<std::optional<std::size_t>, quantities.size()>;

/// Reads the description of columns.
/// @throws Error for a word that is no quantity or is there twice, and for a missing quantity
ColumnPlaces columnPlacesOf(const std::string& description);

}  // namespace Velorn::Flights
