// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The bounding polygon of points seen from above.
#pragma once

#include <span>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

/// The convex hull in plan as the half-planes that it is cut out of, those of the points' extent in
/// easting and northing among them. Points on one line, or in one place, have a hull, too.
class PlanHull {
 public:
  /// The hull of nothing.
  PlanHull() = default;
  /// @param points  finite
  explicit PlanHull(std::span<const point> points);

  bool empty() const { return corners_.empty(); }

  /// True within the hull whose sides were moved outwards by `growth` [m]; corners stay pointed as
  /// far as the points' extent, grown likewise, lets them.
  bool holds(const point& place, double growth) const;

  /// True when a line along a side of either hull has the two on different sides, more than `gap`
  /// [m] apart (the separating axes of Gottschalk, Lin and Manocha: OBBTree, 1996), or when either
  /// is empty.
  bool isApartFrom(const PlanHull& other, double gap) const;

 private:
  struct Corner {
    double x, y;
  };
  /// The places with east * x + north * y <= reach.
  struct HalfPlane {
    double east, north, reach;
  };

  bool hasSideBetween(const PlanHull& other, double gap) const;

  std::vector<Corner> corners_;  // anticlockwise, relative to origin_
  std::vector<HalfPlane> sides_;
  Corner origin_{0.0, 0.0};
};

}  // namespace Velorn::Flights
