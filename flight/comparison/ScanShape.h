// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How a scanner's beams lie about its scan plane.
#pragma once

#include <vector>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights::Comparison {

/// The straight line q1 = a + b r through all beams, q1 the angle forward of the scan plane and r
/// the rightward part of the unit vector along the beam: a scale of q1 acts like a pitch by a and a
/// yaw by −b.
class ScanShape {
 public:
  /// @param scanner  (down, forward, right) [m]
  void add(const std::vector<Geomra::PhysicalSpace::point>& scanner);

  double atNadir() const;  ///< a [rad]; 0 without beams
  double slope() const;    ///< b [rad]; 0 without beams of different directions
  double meanDepth() const { return meanOf(sumDepth_); }  ///< of the points below the scanner [m]

 private:
  double meanOf(double sum) const { return number_ > 0.0 ? sum / number_ : 0.0; }

  double number_ = 0.0, sumR_ = 0.0, sumQ_ = 0.0, sumRR_ = 0.0, sumRQ_ = 0.0, sumDepth_ = 0.0;
};

}  // namespace Velorn::Flights::Comparison
