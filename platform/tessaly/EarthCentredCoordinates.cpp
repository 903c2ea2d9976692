// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/tessaly/EarthCentredCoordinates.h"

#include <GeographicLib/Geocentric.hpp>
#include <cmath>

#include "platform/tessaly/Angles.h"

namespace Tessaly {
namespace {

using Geomra::PhysicalSpace::point;

const GeographicLib::Geocentric& geocentric(const Ellipsoid& ellipsoid) {
  const auto of = [](const Ellipsoid& e) {
    return GeographicLib::Geocentric(e.getSemiMajorAxis(), e.getFlattening());
  };
  static const auto wgs84 = of(Ellipsoid::wgs84());
  static const auto grs80 = of(Ellipsoid::grs80());
  return ellipsoid == Ellipsoid::grs80() ? grs80 : wgs84;
}

// Outside the evolute of the meridian each point has one normal to the ellipsoid. It reaches
// a e² / sqrt(1 − e²) far from the centre; here both sides of the comparison are squared.
bool isOutsideEvolute(const point& p, const Ellipsoid& ellipsoid) {
  const double a = ellipsoid.getSemiMajorAxis();
  const double e2 = ellipsoid.getFirstSquaredEccentricity();
  return (p.x * p.x + p.y * p.y + p.z * p.z) * (1.0 - e2) > a * a * e2 * e2;
}

}  // namespace

point ellipsoidalToCartesian(const point& geographic, const Ellipsoid& ellipsoid,
                             bool /*flag*/) noexcept {
  if (!isFinite(geographic)) return {nan, nan, nan};
  point cartesian;
  geocentric(ellipsoid).Forward(degrees(geographic.y), degrees(geographic.x), geographic.z,
                                cartesian.x, cartesian.y, cartesian.z);
  return cartesian;
}

std::pair<point, bool> cartesianToEllipsoidalWithConvergedInfo(const point& cartesian,
                                                               const Ellipsoid& ellipsoid,
                                                               bool /*flag*/) noexcept {
  if (!isFinite(cartesian)) return {{nan, nan, nan}, false};
  double latitude = nan, longitude = nan, height = nan;
  geocentric(ellipsoid).Reverse(cartesian.x, cartesian.y, cartesian.z, latitude, longitude, height);
  const point geographic{radians(longitude), radians(latitude), height};
  return {geographic, isOutsideEvolute(cartesian, ellipsoid) && isFinite(geographic)};
}

}  // namespace Tessaly
