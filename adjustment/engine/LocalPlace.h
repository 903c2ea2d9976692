// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A place about which the projection and its derivatives are polynomials, as plain data for
// kernels. LocalPlaces.h makes it.
#pragma once

#include "adjustment/georef/LocalPolynomials.h"

namespace Velorn {

/// The polynomials about a place on the ground, in the order of `falling`. Derivatives are by
/// coordinates off the place, in which the polynomials leave out terms of fourth degree at least:
/// less than 1e-9 of them within the distances below, up to 84° north.
struct LocalPlace {
  LocalPolynomials polynomials;
  double byEarthCentred[3][3][20];  ///< of projected coordinate i by earth-centred coordinate j
  /// Of easting and northing: how latitude φ and longitude λ change with them [rad/m], and the
  /// radii M of the meridian and ν cos φ of the parallel [m]. The angles need a degree more far
  /// north, where meridians run together.
  struct OfSensor {
    double phi[2][15], lambda[2][15], meridian[10], parallel[10];
  } ofSensor;
};

/// How far off a place its polynomials are taken [m]. Of a sensor horizontally: its height enters
/// exactly.
inline constexpr double widestOfSensor = 5000.0, widestOfPoint = 4000.0;

}  // namespace Velorn
