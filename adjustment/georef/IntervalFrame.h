// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The sensor model between two records of the trajectory and within one section, prepared for the
// vectors of FrameKernel.h: position, attitude and local level as polynomials of time. World points
// are the same as StripModel's to 2e-8 m.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "adjustment/georef/FrameKernel.h"
#include "adjustment/georef/LocalProjection.h"
#include "adjustment/georef/Mounting.h"
#include "adjustment/georef/TrajectoryCorrection.h"

namespace Velorn {

/// What the frame of an interval is made from.
struct Interval {
  Pose<double> before, after;      ///< of the trajectory at its two records
  double first = 0.0, last = 0.0;  ///< times of the two records [s of week]
  SectionCorrections<double> corrections;
  double sectionStart = 0.0, sectionEnd = 0.0;  ///< [s of week]

  /// The interval's times are from() < t ≤ until(). One on a record belongs to the interval that
  /// ends there, one on the border of two sections to the later one.
  /// @{
  double from() const { return std::max(first, justBefore(sectionStart)); }
  double until() const { return std::min(last, justBefore(sectionEnd)); }
  /// @}

 private:
  static double justBefore(double t) {
    return std::nextafter(t, -std::numeric_limits<double>::infinity());
  }
};

/// The corrected path of the sensor in an interval as powers of u, the time from its middle in
/// intervals: −1/2 to 1/2.
class IntervalPath {
 public:
  explicit IntervalPath(const Interval& interval);

  /// p'(0), where the sensor is in the middle.
  const Vector3<double>& middle() const { return position_[0]; }

  /// The frame off the place of the polynomials. Empty where it would not be good to 1e-9 m: the
  /// aircraft moved more than some 300 m or turned more than some 13°, the corrections bend the
  /// path, the records are too close in time for doubles.
  /// @param local  about the cell of the middle; must live as long as the frame
  std::optional<IntervalFrame> frame(const Mounting<double>& mounting,
                                     const LocalPolynomials& local) const;

 private:
  bool isSmooth() const;
  bool turnsWithin(double widest) const;

  double first_, perSecond_;
  std::array<Vector3<double>, 4> position_;  // p'(u) [m]
  std::array<Vector3<double>, 4> attitude_;  // a'(u) [rad]
};

/// Empty when the angles are changed by more than 0.1 rad.
std::optional<PolarCorrection> polarCorrectionOf(const Mounting<double>& mounting);

}  // namespace Velorn
