// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the formulas of a transverse Mercator projection and its ellipsoid need, computed once.
#pragma once

#include <array>

#include "platform/tessaly/TransverseMercator.h"

namespace Velorn {

/// Constants of a projection. The series are Krüger's of sixth order in the third flattening n,
/// with the coefficients of C. F. F. Karney, Transverse Mercator with an accuracy of a few
/// nanometers, J. Geodesy 85 (2011) 475-485, equations (14), (35) and (36).
struct Projection {
  double semiMajorAxis;            ///< a [m]
  double semiMinorAxis;            ///< b [m]
  double squaredEccentricity;      ///< e²
  double scaledRadius;             ///< k0 A: scale times radius of the rectifying sphere [m]
  double falseEasting;             ///< [m]
  double falseNorthing;            ///< [m]
  double centralMeridian;          ///< [rad]
  std::array<double, 6> toGrid;    ///< α1 to α6
  std::array<double, 6> fromGrid;  ///< β1 to β6
};

Projection projectionOf(const Tessaly::TransverseMercatorProjectionParameter& parameter);

}  // namespace Velorn
