// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the statistics measure at a point and between two points. Pure functions; none of their
// squares overflows or vanishes.
#pragma once

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn {

/// |b.z - a.z|
double verticalDistance(const Geomra::PhysicalSpace::point& a,
                        const Geomra::PhysicalSpace::point& b);

/// sqrt(dx^2 + dy^2)
double horizontalDistance(const Geomra::PhysicalSpace::point& a,
                          const Geomra::PhysicalSpace::point& b);

/// Signed distance of the first point from the plane through the second one, (first - second) . n
/// / |n|; positive on the side to which n points.
/// @param normal  n, finite, of any length
/// @return        NaN for a zero normal; what a float cannot hold becomes infinite
float pointToPlane(const Geomra::PhysicalSpace::point& first,
                   const Geomra::PhysicalSpace::point& second,
                   const Geomra::PhysicalSpace::vector& normal);

}  // namespace Velorn
