// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How well the strips fit, before an adjustment or after it.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/orvek/Statistic.h"

namespace Velorn {

/// How far an adjustment moved the points of one strip. A quantile is the lower edge of a bin of
/// 0.1 m, and 0 without points; points that moved 4 m and more, or to a place that is no number,
/// enter none.
struct MovementFigures {
  double vertical90 = 0.0;       ///< 90 % quantile of |dz| [m]
  double horizontal90 = 0.0;     ///< 90 % quantile of sqrt(dx^2 + dy^2) [m]
  std::uint64_t vertical = 0;    ///< points in the vertical quantile
  std::uint64_t horizontal = 0;  ///< points in the horizontal quantile
  std::uint64_t beyond = 0;      ///< movements of 4 m and more, of both kinds together
  std::uint64_t notFinite = 0;   ///< movements that are NaN or infinite, of both kinds together
};

/// Differences are signed distances of the first point from the plane of its correspondence [m];
/// their figures are those of all values, also beyond the range of the histograms. Starts as that
/// of no correspondences: counts of zero, figures unknown (NaN).
struct PhaseFigures {
  OrvekStatistic::Summary pairs;           ///< between two strips
  OrvekStatistic::Summary groundTruth;     ///< between a strip and the ground truth
  std::vector<std::uint64_t> classCounts;  ///< correspondences by TerrainType
  std::vector<MovementFigures> movements;  ///< by strip; all zero before an adjustment
};

}  // namespace Velorn
