// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/tessaly/PolarCoordinates.h"

#include <cmath>

namespace Tessaly {

using Geomra::PhysicalSpace::point;

point polarCoordinatesFromCartesian(const point& cartesian) noexcept {
  const auto [s0, s1, s2] = cartesian;
  // Two roots: the hypot of three arguments may take NaN and zeros for the zero vector.
  const double inPlane = std::hypot(s0, s2);
  const double range = std::hypot(inPlane, s1);
  if (range == 0.0) return {};  // atan2 would tell a negative zero from a positive one
  return {range, std::atan2(s1, inPlane), std::atan2(s0, s2)};
}

point cartesianCoordinatesFromPolar(const point& polar) noexcept {
  const auto [range, elevation, azimuth] = polar;
  const double inPlane = range * std::cos(elevation);
  return {inPlane * std::sin(azimuth), range * std::sin(elevation), inPlane * std::cos(azimuth)};
}

}  // namespace Tessaly
