// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The sensor model once more, written straight down in long double, with other formulas than the
// library's wherever there are any: the projection without a series, by the meridian's arc of a
// complex latitude; latitudes by iteration to the last digit. Slow, and good to 1e-12 m.
#pragma once

#include <array>

#include "platform/tessaly/TransverseMercator.h"

namespace Exact {

using Real = long double;
using Triple = std::array<Real, 3>;

/// What is known of a measurement.
struct Measurement {
  Triple scanner;             // down, forward, right [m]
  Triple position, attitude;  // interpolated: projected, with height [m]; roll, pitch, yaw [rad]
  Real dt = 0;                // since the start of the section [s]
};

/// All unknowns: offsets, scales, misalignment [rad], lever arm [m], twelve position corrections,
/// twelve angle corrections.
constexpr std::size_t unknowns = 36;
using Unknowns = std::array<Real, unknowns>;

/// Easting, northing, height [m].
Triple worldPoint(const Measurement& measurement, const Unknowns& unknowns,
                  const Tessaly::TransverseMercatorProjectionParameter& zone);

/// Projected coordinates of longitude, latitude [rad], height, and the way back.
Triple projected(const Triple& geographic, const Tessaly::TransverseMercatorProjectionParameter&);
Triple geographicOfProjected(const Triple& point,
                             const Tessaly::TransverseMercatorProjectionParameter& zone);

/// Derivative of the world point by each unknown, by central differences of two widths, of which
/// the leading error is taken out (Richardson).
std::array<Triple, unknowns> derivatives(
    const Measurement& measurement, const Unknowns& unknowns,
    const Tessaly::TransverseMercatorProjectionParameter& zone);

}  // namespace Exact
