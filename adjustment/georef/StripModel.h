// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The sensor model of one strip, one measurement at a time, with the platform's coordinate
// operations in the order of the model's formulas.
#pragma once

#include <optional>

#include "adjustment/georef/Georeferenced.h"
#include "adjustment/georef/IntervalFrame.h"
#include "platform/geomra/PhysicalSpace.h"
#include "platform/tessaly/TransverseMercator.h"
#include <velorn/Section.h>

namespace Velorn {

class SolverParameters;
class Trajectory;

/// The model of one strip. It refers to parameters and trajectory, and only reads them.
class StripModel {
 public:
  /// @param report  see Trajectory::interpolateTrajectory
  /// @throws std::out_of_range when there are no sections yet
  StripModel(const SolverParameters& parameters, const Trajectory& trajectory, unsigned int week,
             unsigned int strip, bool report);

  /// The world point of a measurement (down, forward, right) [m] at a GPS time [s of week]. What
  /// has no position, or no section, is told on the console and computed all the same.
  Georeferenced georeference(const Geomra::PhysicalSpace::point& scanner, double t) const;

  /// The interval of a time. Empty, without a message, where the model is not one of a line between
  /// two records and one section.
  std::optional<Interval> intervalAbout(double t) const;

  const Mounting<double>& mounting() const { return mounting_; }
  const Tessaly::TransverseMercatorProjectionParameter& zone() const { return zone_; }

 private:
  Pose<double> poseAt(double t, Code& code) const;

  const SolverParameters& parameters_;
  const Trajectory& trajectory_;
  unsigned int week_, strip_;
  bool report_;
  Mounting<double> mounting_;
  Tessaly::TransverseMercatorProjectionParameter zone_;
};

}  // namespace Velorn
