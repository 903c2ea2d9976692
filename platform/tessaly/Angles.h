// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Inside this room only: the geodesy library underneath counts in degrees. Both factors are within
// 4e-17 of their true values, so that a conversion costs one rounding: 0.8 nm on the ground up to
// 128 degrees, 1.6 nm beyond.
#pragma once

#include <limits>

#include "platform/geomra/Degree.h"

namespace Tessaly {

/// The coordinates of what is no place.
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

constexpr double degrees(double radians) {
  return radians * Geomra::degreesPerRadian;
}

constexpr double radians(double degrees) {
  return degrees * Geomra::degree;
}

}  // namespace Tessaly
