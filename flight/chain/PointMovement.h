// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How far an adjustment moves the points of a run, which is what rounds end by.
#pragma once

#include "flight/chain/RunContext.h"
#include "flight/surfaces/Solution.h"

namespace Velorn::Flights {

/// Medians over some thousand points of each raster [m], at least a metre each.
struct Reach {
  double range = 1.0;  ///< from the scanner
  double aside = 1.0;  ///< from the line below it
};

/// @throws Error that names the file
Reach reachOf(RunContext& run);

/// From one solution to another.
struct Movement {
  /// 95 % quantile of the distances between a strip's points, of the strip that moves most [m].
  double points = unknownFigure;
  /// What the change of one global correction alone would do to a point at the median range, of the
  /// one that does most [m]: corrections may creep along together and leave the points in place.
  /// Scales of the angles are left out. Unknown without a solution before.
  double byOne = unknownFigure;
};

/// Some thousand points of each raster stand for a strip; without places their movement is unknown.
/// @param before  none: the delivered places
/// @throws Error that names the file
Movement movementOf(RunContext& run, const Solution* before, const Solution& after);

}  // namespace Velorn::Flights
