// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A projection about a place as polynomials: the Taylor series of the sensor model's own formulas,
// up to the fourth degree. Coordinates are differences from the place's, so that nothing large is
// rounded: within 5 km a result differs by some 1e-9 m from the formulas evaluated without
// rounding, which is less than what they lose in doubles.
#pragma once

#include <array>
#include <cstdint>

#include "adjustment/georef/LocalPolynomials.h"
#include "adjustment/georef/Rotation.h"

namespace Velorn {

struct LocalSeries;
struct Projection;

/// A cube of 512 m of projected coordinates: which place's polynomials serve the sensors in it.
using Cell = std::array<std::int64_t, 3>;

Cell cellOf(const Vector3<double>& projected);
Vector3<double> centreOf(const Cell& cell);

/// Whether the formulas hold with all digits at a projected point; also says no to what is not
/// finite.
bool isInZone(const Vector3<double>& projected, const Projection& projection);

/// The polynomials about a projected point, which must be in the zone.
LocalPolynomials polynomialsAbout(const Vector3<double>& centre, const Projection& projection);

/// The same of the series about that point.
LocalPolynomials polynomialsOf(const LocalSeries& series, const Vector3<double>& centre);

/// Projected coordinates of earth-centred ones, both off the place [m].
Vector3<double> projectedNear(const LocalPolynomials& local, const Vector3<double>& earthCentred);

/// A place as georeferencing needs it: where it is, and how its local level lies.
struct SensorPlace {
  Vector3<double> earthCentred;  ///< off the place of the polynomials [m]
  Matrix3<double> localLevel;    ///< C: north, east, down to earth-centred axes
};

/// Of projected coordinates off the place [m].
SensorPlace sensorPlaceNear(const LocalPolynomials& local, const Vector3<double>& projected);

}  // namespace Velorn
