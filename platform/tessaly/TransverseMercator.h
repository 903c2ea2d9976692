// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The transverse Mercator projection of the UTM zones: Krüger's series of sixth order, after
// C. F. F. Karney, Transverse Mercator with an accuracy of a few nanometers, J. Geodesy 85 (2011).
// Series and rounding together stay within 1e-8 m up to 35° from the central meridian; beyond 75°
// the series no longer holds.
//
//   const auto zone = Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(25832);
//   const auto geographic = Tessaly::inverseTransverseMercatorProjection(projected, zone, false);
//
// Projected points are (easting, northing, height) [m], geographic ones (longitude [rad], latitude
// [rad], height [m]); the height passes through unchanged. The operations may be called from any
// thread and throw nothing.
#pragma once

#include "platform/Visibility.h"
#include "platform/geomra/PhysicalSpace.h"
#include "platform/tessaly/Ellipsoid.h"

namespace Tessaly {

/// What defines a UTM projection; some doubles, cheap to copy.
class VELORN_PLATFORM_EXPORT TransverseMercatorProjectionParameter {
 public:
  /// No zone, but a working projection: UTM's scale and false easting about the meridian of
  /// Greenwich on WGS84.
  TransverseMercatorProjectionParameter() = default;

  /// A zone of the northern hemisphere.
  /// @param epsg  32601 to 32660: WGS84, zones 1 to 60; 25828 to 25837: ETRS89 (GRS80), zones 28
  ///              to 37
  /// @throws std::invalid_argument, naming the code, for any other
  static TransverseMercatorProjectionParameter UTMfromEPSG(const unsigned int& epsg);

  Ellipsoid getEllipsoid() const { return ellipsoid_; }

  /// [rad], positive to the east.
  double getCentralMeridian() const;

  /// The projection's scale along the central meridian [-].
  double getScaleAtCentralMeridian() const { return scaleAtCentralMeridian_; }

  /// Easting of the central meridian [m].
  double getFalseEasting() const { return falseEasting_; }

  /// Northing of the equator [m].
  double getFalseNorthing() const { return falseNorthing_; }

 private:
  TransverseMercatorProjectionParameter(const Ellipsoid& ellipsoid, unsigned int zone);

  friend Geomra::PhysicalSpace::point transverseMercatorProjection(
      const Geomra::PhysicalSpace::point&, const TransverseMercatorProjectionParameter&,
      bool) noexcept;
  friend Geomra::PhysicalSpace::point inverseTransverseMercatorProjection(
      const Geomra::PhysicalSpace::point&, const TransverseMercatorProjectionParameter&,
      bool) noexcept;
  friend double meridianConvergence(const Geomra::PhysicalSpace::point&,
                                    const TransverseMercatorProjectionParameter&) noexcept;

  Ellipsoid ellipsoid_;
  double centralMeridianDegrees_ = 0.0;  // exact, which radians would not be
  double scaleAtCentralMeridian_ = 0.9996;
  double falseEasting_ = 500000.0;
  double falseNorthing_ = 0.0;
};

/// Projected coordinates of a geographic point.
/// @param geographic  longitude (any number of turns) and latitude in [−π/2, π/2] [rad], height
/// [m];
///                    southern latitudes get northings below the false northing
/// @param flag        the host's; both values give the same result
/// @return (easting, northing, height) [m]; easting and northing are NaN for a non-finite angle and
///         for a latitude beyond a pole
VELORN_PLATFORM_EXPORT Geomra::PhysicalSpace::point transverseMercatorProjection(
    const Geomra::PhysicalSpace::point& geographic,
    const TransverseMercatorProjectionParameter& parameter, bool flag) noexcept;

/// Geographic coordinates of a projected point.
/// @param projected  (easting, northing, height) [m]
/// @param flag       the host's; both values give the same result
/// @return longitude in [−π, π], also where a zone crosses the date line, and latitude in
///         [−π/2, π/2] [rad], height [m]; longitude and latitude are NaN for a non-finite easting
///         or northing
VELORN_PLATFORM_EXPORT Geomra::PhysicalSpace::point inverseTransverseMercatorProjection(
    const Geomra::PhysicalSpace::point& projected,
    const TransverseMercatorProjectionParameter& parameter, bool flag) noexcept;

/// Direction of grid north at a geographic point, clockwise from true north: what has to be added
/// to a direction counted from grid north. In the north it is positive east of the central
/// meridian.
/// @param geographic  as transverseMercatorProjection takes it; the height is not looked at
/// @return [rad]; NaN for a non-finite angle and for a latitude beyond a pole
VELORN_PLATFORM_EXPORT double meridianConvergence(
    const Geomra::PhysicalSpace::point& geographic,
    const TransverseMercatorProjectionParameter& parameter) noexcept;

}  // namespace Tessaly
