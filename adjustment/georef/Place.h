// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Geographic coordinates as the sensor model uses them, over any scalar, and earth-centred ones.
#pragma once

#include <cmath>

#include "adjustment/georef/Projection.h"
#include "adjustment/georef/Rotation.h"

namespace Velorn {

/// A geographic place. The model never needs the angles themselves, only their sines and cosines,
/// which come out of square roots: no sine, cosine or arctangent is evaluated on the way from one
/// system to the other.
template <typename T>
struct Place {
  SineCosine<T> latitude;
  SineCosine<T> longitude;  ///< from the central meridian of the projection
  T height;                 ///< above the ellipsoid [m]
};

/// Earth-centred coordinates, the first axis through the central meridian [m]:
///   ν = a / sqrt(1 − e² sin² φ),  X = (ν + h) cos φ cos λ,  Y = (ν + h) cos φ sin λ,
///   Z = (ν (1 − e²) + h) sin φ
template <typename T>
Vector3<T> earthCentred(const Place<T>& place, const Projection& projection) {
  using std::sqrt;
  const double e2 = projection.squaredEccentricity;
  const auto& [sp, cp] = place.latitude;
  const T nu = projection.semiMajorAxis / sqrt(1.0 - e2 * sp * sp);
  const T fromAxis = (nu + place.height) * cp;
  return {fromAxis * place.longitude.cosine, fromAxis * place.longitude.sine,
          (nu * (1.0 - e2) + place.height) * sp};
}

/// The place of earth-centred coordinates, by two rounds of
///   tan φ = (Z + e'² b sin³ β) / (ρ − e² a cos³ β),  tan β = b / a tan φ,
/// from tan β = a Z / (b ρ) on (B. R. Bowring, Transformation from spatial to geographical
/// coordinates, Survey Review 23 (1976) 323-327). The height is
///   h = ρ cos φ + Z sin φ − a sqrt(1 − e² sin² φ),
/// which has no small denominator anywhere. Two rounds are exact to a double's last place from 20
/// km below the ellipsoid to 100 km above; it is not for places near the earth's axis.
/// @param x  as earthCentred gives them [m]
template <typename T>
Place<T> placeOf(const Vector3<T>& x, const Projection& projection) {
  using std::sqrt;
  const double a = projection.semiMajorAxis, b = projection.semiMinorAxis;
  const double e2 = projection.squaredEccentricity;
  const T fromAxis = sqrt(x[0] * x[0] + x[1] * x[1]);  // ρ
  T s = x[2], c = fromAxis;  // sine and cosine of φ, up to a common factor
  T betaSine = a * s, betaCosine = b * c;
  for (int round = 0; round < 2; ++round) {
    const T norm = sqrt(betaSine * betaSine + betaCosine * betaCosine);
    betaSine /= norm;
    betaCosine /= norm;
    s = x[2] + e2 * a * a / b * betaSine * betaSine * betaSine;
    c = fromAxis - e2 * a * betaCosine * betaCosine * betaCosine;
    betaSine = b * s;
    betaCosine = a * c;
  }
  const T norm = sqrt(s * s + c * c);
  s /= norm;
  c /= norm;
  return {{s, c},
          {x[1] / fromAxis, x[0] / fromAxis},
          fromAxis * c + x[2] * s - a * sqrt(1.0 - e2 * s * s)};
}

}  // namespace Velorn
