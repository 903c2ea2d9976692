// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/tessaly/TransverseMercator.h"

#include <GeographicLib/TransverseMercator.hpp>
#include <cmath>
#include <stdexcept>
#include <string>

#include "platform/tessaly/Angles.h"

namespace Tessaly {
namespace {

using Geomra::PhysicalSpace::point;
using Parameter = TransverseMercatorProjectionParameter;

// All parameters have the scale of the default one; what is left to tell apart is the ellipsoid.
const GeographicLib::TransverseMercator& series(const Ellipsoid& ellipsoid) {
  const auto of = [](const Ellipsoid& e) {
    return GeographicLib::TransverseMercator(e.getSemiMajorAxis(), e.getFlattening(),
                                             Parameter().getScaleAtCentralMeridian());
  };
  static const auto wgs84 = of(Ellipsoid::wgs84());
  static const auto grs80 = of(Ellipsoid::grs80());
  return ellipsoid == Ellipsoid::grs80() ? grs80 : wgs84;
}

}  // namespace

Parameter::TransverseMercatorProjectionParameter(const Ellipsoid& ellipsoid, unsigned int zone)
    : ellipsoid_(ellipsoid), centralMeridianDegrees_(6.0 * zone - 183.0) {}

Parameter Parameter::UTMfromEPSG(const unsigned int& epsg) {
  if (epsg >= 32601 && epsg <= 32660) return {Ellipsoid::wgs84(), epsg - 32600};
  if (epsg >= 25828 && epsg <= 25837) return {Ellipsoid::grs80(), epsg - 25800};
  throw std::invalid_argument(
      "TransverseMercatorProjectionParameter::UTMfromEPSG: EPSG code " + std::to_string(epsg) +
      " is no UTM zone of the northern hemisphere on WGS84 (32601 to 32660) or ETRS89 (25828 to "
      "25837)");
}

double Parameter::getCentralMeridian() const {
  return radians(centralMeridianDegrees_);
}

point transverseMercatorProjection(const point& geographic, const Parameter& parameter,
                                   bool /*flag*/) noexcept {
  // At a pole the series does not look at the longitude.
  if (!std::isfinite(geographic.x)) return {nan, nan, geographic.z};
  double x = nan, y = nan;
  series(parameter.ellipsoid_)
      .Forward(parameter.centralMeridianDegrees_, degrees(geographic.y), degrees(geographic.x), x,
               y);
  return {parameter.falseEasting_ + x, parameter.falseNorthing_ + y, geographic.z};
}

point inverseTransverseMercatorProjection(const point& projected, const Parameter& parameter,
                                          bool /*flag*/) noexcept {
  double latitude = nan, longitude = nan;
  series(parameter.ellipsoid_)
      .Reverse(parameter.centralMeridianDegrees_, projected.x - parameter.falseEasting_,
               projected.y - parameter.falseNorthing_, latitude, longitude);
  return {radians(longitude), radians(latitude), projected.z};
}

double meridianConvergence(const point& geographic, const Parameter& parameter) noexcept {
  if (!std::isfinite(geographic.x)) return nan;
  double x = nan, y = nan, convergence = nan, scale = nan;
  series(parameter.ellipsoid_)
      .Forward(parameter.centralMeridianDegrees_, degrees(geographic.y), degrees(geographic.x), x,
               y, convergence, scale);
  return radians(convergence);
}

}  // namespace Tessaly
