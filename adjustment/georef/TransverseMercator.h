// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The transverse Mercator projection over any scalar, both ways. Where the formulas come from:
// Projection.h. They hold up to 35° from the central meridian and everywhere off the poles.
#pragma once

#include <cmath>

#include "adjustment/georef/Place.h"

namespace Velorn {

namespace Detail {

/// Where Clenshaw's recurrence b = c + 2 cos 2(ξ + iη) b' − b'' ends: real and imaginary part of
/// its last two terms.
template <typename T>
struct Recurrence {
  T x, y, xBefore = T(0.0), yBefore = T(0.0);

  /// @param stepReal, stepImaginary  of 2 cos 2(ξ + iη)
  Recurrence(const std::array<double, 6>& c, const T& stepReal, const T& stepImaginary)
      : x(c[5]), y(0.0) {
    for (int j = 4; j >= 0; --j) {
      const T xNext = stepReal * x - stepImaginary * y - xBefore + c[static_cast<std::size_t>(j)];
      const T yNext = stepReal * y + stepImaginary * x - yBefore;
      xBefore = x;
      yBefore = y;
      x = xNext;
      y = yNext;
    }
  }
};

/// Σ c[j] sin 2j(ξ + iη), j from 1: real and imaginary part.
template <typename T>
struct SineSeries {
  T real, imaginary;

  /// @param twice              of 2ξ
  /// @param sinhTwice, coshTwice  of 2η
  SineSeries(const std::array<double, 6>& c, const SineCosine<T>& twice, const T& sinhTwice,
             const T& coshTwice) {
    const Recurrence<T> b(c, 2.0 * twice.cosine * coshTwice, -2.0 * twice.sine * sinhTwice);
    const T sineReal = twice.sine * coshTwice, sineImaginary = twice.cosine * sinhTwice;
    real = sineReal * b.x - sineImaginary * b.y;
    imaginary = sineReal * b.y + sineImaginary * b.x;
  }
};

/// σ = sinh(e artanh(e sin φ)), by the first terms of both series: e sin φ is below 0.082, the
/// terms left out are below 1e-17 of the sum.
template <typename T>
T sigma(const T& sineLatitude, double e2) {
  const T x2 = e2 * sineLatitude * sineLatitude;
  T sum(1.0 / 15);
  for (const double k : {13.0, 11.0, 9.0, 7.0, 5.0, 3.0, 1.0}) sum = sum * x2 + 1.0 / k;
  const T y = e2 * sineLatitude * sum;
  const T y2 = y * y;
  return y * (1.0 + y2 / 6.0 * (1.0 + y2 / 20.0 * (1.0 + y2 / 42.0)));
}

/// Sine and cosine of the latitude φ whose conformal latitude has the tangent τ', by two of
/// Newton's steps for τ = tan φ from τ' / (1 − e²) on:
///   τ' = τ sqrt(1 + σ²) − σ sqrt(1 + τ²)
template <typename T>
SineCosine<T> latitudeOfConformal(const T& conformal, double e2) {
  using std::sqrt;
  T tau = conformal / (1.0 - e2);
  for (int step = 0; step < 2; ++step) {
    const T secant = sqrt(1.0 + tau * tau);
    const T s = sigma<T>(tau / secant, e2);
    const T reached = tau * sqrt(1.0 + s * s) - s * secant;
    tau += (conformal - reached) / sqrt(1.0 + reached * reached) * (1.0 + (1.0 - e2) * tau * tau) /
           ((1.0 - e2) * secant);
  }
  const T secant = sqrt(1.0 + tau * tau);
  return {tau / secant, 1.0 / secant};
}

}  // namespace Detail

/// Easting, northing [m] and height of a place.
template <typename T>
Vector3<T> projected(const Place<T>& place, const Projection& projection) {
  using std::atan2, std::log1p, std::sqrt;
  const auto& [sp, cp] = place.latitude;
  const T s = Detail::sigma(sp, projection.squaredEccentricity);
  // Sine, and cosine times the longitude's, of the conformal latitude, up to a common factor.
  const T up = sp * sqrt(1.0 + s * s) - s;
  const T along = cp * place.longitude.cosine;
  const T norm2 = up * up + along * along;
  const T sinh = cp * place.longitude.sine / sqrt(norm2);
  const T cosh = sqrt(1.0 + sinh * sinh);
  const T xi = atan2(up, along);
  const T eta = log1p(sinh + sinh * sinh / (1.0 + cosh));  // arsinh

  const SineCosine<T> twice{2.0 * up * along / norm2, (along - up) * (along + up) / norm2};
  const Detail::SineSeries<T> series(projection.toGrid, twice, T(2.0 * sinh * cosh),
                                     T(1.0 + 2.0 * sinh * sinh));
  return {projection.falseEasting + projection.scaledRadius * (eta + series.imaginary),
          projection.falseNorthing + projection.scaledRadius * (xi + series.real), place.height};
}

/// The place of a projected point.
/// @param point  easting, northing, height [m]
template <typename T>
Place<T> placeOfProjected(const Vector3<T>& point, const Projection& projection) {
  using std::sinh, std::sqrt;
  const T xi = (point[1] - projection.falseNorthing) / projection.scaledRadius;
  const T eta = (point[0] - projection.falseEasting) / projection.scaledRadius;
  const T sinhTwice = sinh(T(2.0 * eta));
  const Detail::SineSeries<T> series(projection.fromGrid, sineCosine(T(2.0 * xi)), sinhTwice,
                                     T(sqrt(1.0 + sinhTwice * sinhTwice)));
  const auto [up, along] = sineCosine(T(xi - series.real));
  const T across = sinh(T(eta - series.imaginary));
  const T norm = sqrt(along * along + across * across);
  return {Detail::latitudeOfConformal(T(up / norm), projection.squaredEccentricity),
          {across / norm, along / norm},
          point[2]};
}

}  // namespace Velorn
