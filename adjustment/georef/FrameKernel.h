// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The sensor model for many points of one interval of the trajectory, on vectors of doubles. What
// is prepared for an interval, and how good it is: IntervalFrame.h.
#pragma once

#include <cstddef>

#include "adjustment/georef/LocalPolynomials.h"

namespace Velorn {

/// One interval of the trajectory, as polynomials of u, the time from its middle in intervals: −1/2
/// to 1/2. A measurement s belongs to the point, earth-centred off the place of `local`,
///   motion[i][0](u) + Σ motion[i][1 + j](u) s[j],  i, j from 0 to 2.
struct IntervalFrame {
  static constexpr std::size_t lowDegree = 3, highDegree = 7;

  double first;           ///< time of the interval's first record [s of week]
  double perSecond;       ///< of u
  double position[3][4];  ///< p'(u), projected, off the place of `local` [m]
  std::size_t degree;     ///< of the motion: one of the two
  double motion[3][4][highDegree + 1];
  const LocalPolynomials* local;
};

/// What is done to the polar form of every measurement, q' = (1 + c) q + o.
struct PolarCorrection {
  enum class Kind { none, offsets, scaledAngles } kind;
  double offsets[3], scales[3];
  double sines[3], cosines[3];  ///< of the offsets; the first are not used
};

/// Points in, points and perhaps vectors out, three doubles each.
struct PointBatch {
  const double* points;
  const double* times;  ///< [s of week]
  double* results;
  double* directions;  ///< null where there are none
  std::size_t count;
};

/// Points first to end − 1 of a batch.
inline PointBatch partOf(const PointBatch& batch, std::size_t first, std::size_t end) {
  return {batch.points + 3 * first, batch.times + first, batch.results + 3 * first,
          batch.directions ? batch.directions + 3 * first : nullptr, end - first};
}

/// World points of measurements in one interval, and directions of that length, or whole for 0, as
/// scanner2world gives them.
/// @return whether all points have been served. The results of others have NaN in front: they are
///         not finite, or farther than `reach` from the place of frame.local.
bool toWorld(const IntervalFrame& frame, const PolarCorrection& correction, double directionLength,
             const PointBatch& batch);

/// Measurements of world points in one interval, where polar forms are not corrected; without
/// directions.
/// @return as toWorld
bool toScanner(const IntervalFrame& frame, const PointBatch& batch);

}  // namespace Velorn
