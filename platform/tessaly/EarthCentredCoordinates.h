// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Geographic coordinates (longitude [rad], latitude [rad], height above the ellipsoid [m]) and
// earth-centred, earth-fixed cartesian ones (X towards longitude 0 on the equator, Y towards 90°
// east, Z towards the north pole [m]):
//   X = (N + h) cos φ cos λ,   Y = (N + h) cos φ sin λ,   Z = (N (1 − e²) + h) sin φ,
//   N = a / sqrt(1 − e² sin² φ)
// Both directions are closed formulas, good to some nanometres within 5000 km of the surface.
// They may be called from any thread and throw nothing.
#pragma once

#include <utility>

#include "platform/Visibility.h"
#include "platform/geomra/PhysicalSpace.h"
#include "platform/tessaly/Ellipsoid.h"

namespace Tessaly {

/// Earth-centred coordinates of a geographic point.
/// @param geographic  longitude (any number of turns) and latitude in [−π/2, π/2] [rad], height [m]
/// @param flag        the host's; both values give the same result
/// @return (X, Y, Z) [m]; three NaN for non-finite input and for a latitude beyond a pole
VELORN_PLATFORM_EXPORT Geomra::PhysicalSpace::point ellipsoidalToCartesian(
    const Geomra::PhysicalSpace::point& geographic, const Ellipsoid& ellipsoid, bool flag) noexcept;

/// Geographic coordinates of an earth-centred point, and whether they can be relied on.
/// @param cartesian  (X, Y, Z) [m]
/// @param flag       the host's; both values give the same result
/// @return first: longitude in [−π, π] (0 on the axis) and latitude in [−π/2, π/2] [rad], height
///         [m]; three NaN for non-finite input. Second: true when the point is finite and farther
///         than a e² / sqrt(1 − e²), some 43 km, from the earth's centre. Nearer to it more than
///         one normal of the ellipsoid can pass through the point; the place returned is then only
///         one of several.
VELORN_PLATFORM_EXPORT std::pair<Geomra::PhysicalSpace::point, bool>
cartesianToEllipsoidalWithConvergedInfo(const Geomra::PhysicalSpace::point& cartesian,
                                        const Ellipsoid& ellipsoid, bool flag) noexcept;

}  // namespace Tessaly
