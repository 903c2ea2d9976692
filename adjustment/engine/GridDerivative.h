// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How the grid coordinates of a place change with its latitude and longitude, over any scalar.
#pragma once

#include "adjustment/georef/TransverseMercator.h"

namespace Velorn {

/// The projection is conformal: with the isometric latitude ψ and the longitude λ
///   dN + i dE = (real + i imaginary) (dψ + i dλ)
template <typename T>
struct GridDerivative {
  T real, imaginary;  ///< [m/rad]

  /// A gradient by ψ and λ from one by easting and northing.
  std::array<T, 2> isometric(const T& easting, const T& northing) const {
    return {northing * real + easting * imaginary, easting * real - northing * imaginary};
  }

  /// A gradient by easting and northing from one by ψ and λ.
  std::array<T, 2> grid(const T& psi, const T& lambda) const {
    const T inverse = 1.0 / (real * real + imaginary * imaginary);
    return {(psi * imaginary + lambda * real) * inverse,
            (psi * real - lambda * imaginary) * inverse};
  }
};

/// K (1 + Σ 2j α[j] cos 2jζ') cos ζ', with the ζ' = ξ' + iη' of the sphere, for which
/// sin ζ' = tanh(ψ + iλ); notation as in Projection.h.
template <typename T>
GridDerivative<T> gridDerivative(const Place<T>& place, const Projection& projection) {
  using std::sqrt;
  const auto& [sp, cp] = place.latitude;
  const T s = Detail::sigma(sp, projection.squaredEccentricity);
  const T up = sp * sqrt(1.0 + s * s) - s;
  const T along = cp * place.longitude.cosine;
  const T norm2 = up * up + along * along;
  const T inverseNorm = 1.0 / sqrt(norm2);
  const T sinh = cp * place.longitude.sine * inverseNorm;
  const T cosh = sqrt(1.0 + sinh * sinh);
  const SineCosine<T> xi{up * inverseNorm, along * inverseNorm};

  std::array<double, 6> c = projection.toGrid;
  for (std::size_t j = 0; j < c.size(); ++j) c[j] *= 2.0 * static_cast<double>(j + 1);
  const T cosineReal = (xi.cosine - xi.sine) * (xi.cosine + xi.sine) * (1.0 + 2.0 * sinh * sinh);
  const T cosineImaginary = -4.0 * xi.sine * xi.cosine * sinh * cosh;
  const Detail::Recurrence<T> b(c, 2.0 * cosineReal, 2.0 * cosineImaginary);
  const T p = 1.0 + cosineReal * b.x - cosineImaginary * b.y - b.xBefore;
  const T q = cosineReal * b.y + cosineImaginary * b.x - b.yBefore;

  const T real = xi.cosine * cosh, imaginary = -xi.sine * sinh;  // of cos ζ'
  return {projection.scaledRadius * (p * real - q * imaginary),
          projection.scaledRadius * (p * imaginary + q * real)};
}

}  // namespace Velorn
