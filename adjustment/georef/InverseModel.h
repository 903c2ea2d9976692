// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The way from world points back to measurements, one point at a time, with the platform's
// coordinate operations.
#pragma once

#include <optional>

#include "adjustment/georef/IntervalFrame.h"
#include "platform/geomra/PhysicalSpace.h"
#include "platform/tessaly/TransverseMercator.h"

namespace Velorn {

class SolverParameters;
class Trajectory;

/// Measurements with lever arm and misalignment only; all other corrections are zero.
class InverseModel {
 public:
  /// @param trajectory  must live as long as the model
  InverseModel(const SolverParameters& parameters, const Trajectory& trajectory, unsigned int week);

  /// The measurement (down, forward, right) [m] of a world point at a GPS time [s of week]. A time
  /// that has no position is told on the console; its point is computed all the same.
  Geomra::PhysicalSpace::point measurementOf(const Geomra::PhysicalSpace::point& world,
                                             double t) const;

  /// The interval of a time, without corrections. Empty, without a message, where the trajectory is
  /// not a line between two records.
  std::optional<Interval> intervalAbout(double t) const;

  const Mounting<double>& mounting() const { return mounting_; }
  const Tessaly::TransverseMercatorProjectionParameter& zone() const { return zone_; }

 private:
  const Trajectory& trajectory_;
  unsigned int week_;
  Mounting<double> mounting_;
  Tessaly::TransverseMercatorProjectionParameter zone_;
  Matrix3<double> fromBody_;
};

}  // namespace Velorn
