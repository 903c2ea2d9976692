// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The sensor model between two records of the trajectory and within one section. What does not
// depend on the single measurement is computed when it is made; a measurement then costs a fraction
// of what StripModel takes for it, and its world point is the same to 1e-8 m.
#pragma once

#include <array>
#include <optional>

#include "adjustment/georef/Georeferenced.h"
#include "adjustment/georef/SensorModel.h"

namespace Velorn {

/// What the model of an interval is made from.
struct Interval {
  Pose<double> before, after;      ///< of the trajectory at its two records
  double first = 0.0, last = 0.0;  ///< times of the two records [s of week]
  SectionCorrections<double> corrections;
  double sectionStart = 0.0, sectionEnd = 0.0;  ///< [s of week]

  /// A time on a record belongs to the interval that ends there, a time on the border of two
  /// sections to the later one.
  bool holds(double t) const {
    return t > first && t <= last && t >= sectionStart && t < sectionEnd;
  }
};

/// The model of one interval, for every time that it holds.
class IntervalModel {
 public:
  /// Empty where the formulas of an interval are not good to 1e-9 m: the aircraft moved more than
  /// some 100 m, the cubic coefficients bend the path, the sensor is where no zone reaches to.
  /// @param mounting, projection  must live as long as the model
  static std::optional<IntervalModel> of(const Interval& interval, const Mounting<double>& mounting,
                                         const Projection& projection);

  bool holds(double t) const { return interval_.holds(t); }

  /// The world point of a measurement (down, forward, right) [m] at a time of the interval; empty
  /// for one that is not finite or farther than 50 km off.
  std::optional<Georeferenced> georeference(const Geomra::PhysicalSpace::point& scanner,
                                            double t) const;

 private:
  IntervalModel(const Interval& interval, const Mounting<double>& mounting,
                const Projection& projection);
  void placeSensor();
  Matrix3<double> attitudeAt(double u) const;

  const Mounting<double>* mounting_;
  const Projection* projection_;
  Interval interval_;
  double perSecond_;
  // u is the time from the middle of the interval, in intervals: -1/2 to 1/2.
  std::array<Vector3<double>, 4> position_;      // p'(u), powers of u
  std::array<Vector3<double>, 4> attitude_;      // a'(u), powers of u
  std::array<SineCosine<double>, 3> middle_;     // of a'(0)
  bool swings_;                                  // too far for a series about the middle
  std::array<Vector3<double>, 3> earthCentred_;  // X(p'(u)), powers of u
  std::array<Matrix3<double>, 3> localLevel_;    // C at p'(u), powers of u
};

}  // namespace Velorn
