// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A projection about a place as power series of the sensor model's own formulas, for polynomials
// that are evaluated fast.
#pragma once

#include "adjustment/georef/PowerSeries.h"
#include "adjustment/georef/TransverseMercator.h"

namespace Velorn {

/// Of easting and northing off a place, or of X, Y, Z off it [m].
/// @{
using InPlane = PowerSeries<2, 4>;
using InSpace = PowerSeries<3, 4>;
/// @}

struct LocalSeries {
  Place<InPlane> place;           ///< of projected coordinates at the place's height
  Vector3<InPlane> earthCentred;  ///< of the same, off the place [m]
  Vector3<InSpace> projected;     ///< of earth-centred ones, both off the place [m]
};

/// @param centre  the place: easting, northing, height [m], which must be in the zone
LocalSeries seriesAbout(const Vector3<double>& centre, const Projection& projection);

/// Coefficients up to a degree, in the order of `falling` (Polynomials.h).
/// @{
template <std::size_t degree>
void putFalling(const InPlane& series, double* k) {
  for (std::size_t m = 0; m <= degree; ++m) {
    for (std::size_t q = 0; q <= m; ++q) *k++ = series[InPlane::place({degree - m, m - q})];
  }
}

template <std::size_t degree>
void putFalling(const InSpace& series, double* k) {
  for (std::size_t m = 0; m <= degree; ++m) {
    for (std::size_t q = 0; q <= m; ++q) {
      for (std::size_t r = 0; r <= q; ++r) {
        *k++ = series[InSpace::place({degree - m, m - q, q - r})];
      }
    }
  }
}
/// @}

}  // namespace Velorn
