// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The two ellipsoids of satellite positioning. They differ by 0.1 mm at the poles.
#pragma once

namespace Tessaly {

/// An ellipsoid of revolution: WGS84, or GRS80 as ETRS89 uses it. No other can be made, so that
/// what is computed once per ellipsoid can be kept.
class Ellipsoid {
 public:
  /// WGS84.
  constexpr Ellipsoid() = default;

  /// World Geodetic System 1984: a = 6378137 m, 1/f = 298.257223563 (EPSG 7030).
  static constexpr Ellipsoid wgs84() { return {}; }

  /// Geodetic Reference System 1980: a = 6378137 m, 1/f = 298.257222101 (EPSG 7019).
  static constexpr Ellipsoid grs80() { return Ellipsoid(298.257222101); }

  /// a [m], the radius of the equator.
  constexpr double getSemiMajorAxis() const { return semiMajorAxis_; }

  /// f = (a − b) / a [-], with b the distance from the centre to a pole.
  constexpr double getFlattening() const { return 1.0 / inverseFlattening_; }

  /// e² = f (2 − f) = (a² − b²) / a² [-].
  constexpr double getFirstSquaredEccentricity() const {
    return getFlattening() * (2.0 - getFlattening());
  }

  friend constexpr bool operator==(const Ellipsoid&, const Ellipsoid&) = default;

 private:
  constexpr explicit Ellipsoid(double inverseFlattening) : inverseFlattening_(inverseFlattening) {}

  double semiMajorAxis_ = 6378137.0;
  double inverseFlattening_ = 298.257223563;
};

}  // namespace Tessaly
