// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The correction of one component of the trajectory over a strip, section by section.
#pragma once

#include <vector>

#include "adjustment/stochastics/LinearSum.h"
#include <velorn/Section.h>

namespace Velorn {

/// Component of the correction: of the position [m] or of the attitude [rad].
enum class TrajectoryComponent { Easting, Northing, Height, Roll, Pitch, Yaw };

/// c(dt) = Σ x[firstUnknown + m] dt^m, m below `powers`, dt the seconds since `start`.
struct CorrectionPiece {
  Eigen::Index firstUnknown = 0;
  int powers = 0;       ///< 1 to 4
  double start = 0.0;   ///< [GPS seconds]
  double length = 0.0;  ///< [s], above 0

  double end() const { return start + length; }
  LinearSum valueAt(double dt) const;  ///< c(dt)
  LinearSum slopeAt(double dt) const;  ///< c'(dt) [1/s]
};

/// Pieces of a strip in the order of time.
/// @param strip  its sections, of types with unknowns; the last one ends at maxTime
/// @throws std::invalid_argument, naming strip and value, where a section has no unknowns or no
///         length
std::vector<CorrectionPiece> piecesOf(const StripSections& strip, TrajectoryComponent component);

}  // namespace Velorn
