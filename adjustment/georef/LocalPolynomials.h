// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A projection about a place, as plain data for vectors of doubles. LocalProjection.h makes it.
#pragma once

namespace Velorn {

/// A projection about a place, as polynomials of fourth degree: which projected coordinates belong
/// to earth-centred ones, both as differences from the place's, and back. The coefficients of one
/// result stand in the order of `falling` (Polynomials.h).
struct LocalPolynomials {
  double centre[3];            ///< easting, northing, height of the place [m]
  double projected[3][35];     ///< of X, Y, Z [m] off the place
  double earthCentred[3][15];  ///< at the place's height, of easting and northing off the place
  double up[3][15];            ///< unit vector of the normal there, of the same
};

/// How far off its place a LocalPolynomials is good to 1e-9 m [m].
inline constexpr double reach = 5000.0;

}  // namespace Velorn
