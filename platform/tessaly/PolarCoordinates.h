// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The polar form of a laser measurement. With s = (s0, s1, s2) and q = (range, elevation, azimuth):
//   q0 = r = sqrt(s0² + s1² + s2²)     s0 = q0 cos q1 sin q2
//   q1 = arcsin(s1 / r)                s1 = q0 sin q1
//   q2 = atan2(s0, s2)                 s2 = q0 cos q1 cos q2
// so that q1 is the angle out of the plane of s0 and s2, and q2 the angle in it, counted from s2
// towards s0.
#pragma once

#include "platform/Visibility.h"
#include "platform/geomra/PhysicalSpace.h"

namespace Tessaly {

/// Polar form of a cartesian point. The arcsine is evaluated as an arctangent, which keeps its
/// digits near ±90° and needs no care where s1 / r is rounded above one.
/// @param cartesian  s, in any unit
/// @return q: q0 in the unit of s, q1 in [−π/2, π/2] and q2 in [−π, π] [rad]; (0, 0, 0) for the
///         zero vector. No square overflows or underflows on the way. Non-finite input gives a
///         non-finite q0.
VELORN_PLATFORM_EXPORT Geomra::PhysicalSpace::point polarCoordinatesFromCartesian(
    const Geomra::PhysicalSpace::point& cartesian) noexcept;

/// Cartesian point of a polar form, whose angles may be of any size.
/// @param polar  q: q0 in any unit (a negative one points backwards), q1 and q2 [rad]
/// @return s in the unit of q0. Non-finite input gives a non-finite component.
VELORN_PLATFORM_EXPORT Geomra::PhysicalSpace::point cartesianCoordinatesFromPolar(
    const Geomra::PhysicalSpace::point& polar) noexcept;

}  // namespace Tessaly
