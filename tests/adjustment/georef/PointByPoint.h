// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Lists of points against the same points one at a time, with the platform's operations.
#pragma once

#include <algorithm>
#include <cmath>

#include "adjustment/georef/StripModel.h"
#include "tests/adjustment/georef/StripOfPoints.h"

inline constexpr double betweenTwoWays = 2e-8;  // of georeferencing [m]

/// How far world points or directions are apart at most; NaN where one is.
inline double worstDifference(const Points& points, const Velorn::StripModel& model) {
  double worst = 0;
  for (std::size_t i = 0; i < points.times.size(); ++i) {
    const auto plain = model.georeference(points.scanner[i], points.times[i]);
    const double apart = std::max(lengthOf(points.world[i] - plain.world),
                                  lengthOf(points.directions[i] - (plain.sensor - plain.world)));
    worst = std::isnan(apart) ? apart : std::max(worst, apart);
  }
  return worst;
}
