// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The plane through a point's neighbourhood.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

/// Fewest points that a plane is fitted to: three hold it, and three more say how well.
inline constexpr std::size_t fewestForPlane = 6;

/// A plane by least squares of the distances along its normal.
struct PlaneFit {
  point centroid;  ///< of the points [m]
  vector normal;   ///< unit, upward; zero where there is no plane
  double roughness =
      std::numeric_limits<double>::quiet_NaN();  ///< standard deviation of the distances [m]
  /// Root mean squares of the points' spread in the plane, the lesser one and the greater one [m].
  std::array<double, 2> spread{};
  std::size_t points = 0;  ///< that it goes through
  double thickness = 0.0;  ///< the roughness, also of what is no plane for its shape [m]

  bool exists() const { return roughness == roughness; }
  /// Standard deviation of the normal about the axis of which it knows least [rad]: that of the
  /// slope of a regression over the lesser spread.
  double normalSigma() const {
    return roughness / (std::sqrt(static_cast<double>(points)) * spread[0]);
  }
  /// Signed distance of a place from the plane, along the normal [m].
  double distanceOf(const point& place) const {
    return normal.x * (place.x - centroid.x) + normal.y * (place.y - centroid.y) +
           normal.z * (place.z - centroid.z);
  }
};

/// Fits by the eigenvectors of the points' second moments about their centroid (Pearson: On lines
/// and planes of closest fit to systems of points in space, 1901). The roughness has n - 3 degrees
/// of freedom.
/// @param points  finite
/// @return a plane that does not exist for fewer than `fewestForPlane` points, and for points on
///         one line: a lesser spread below a twentieth of the greater one, or below twice the
///         roughness
PlaneFit planeThrough(std::span<const point> points);

}  // namespace Velorn::Flights
