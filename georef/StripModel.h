// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The sensor model of one strip, one measurement at a time, with the platform's coordinate
// operations in the order of the model's formulas.
#pragma once

#include "georef/Mounting.h"
#include "georef/TrajectoryCorrection.h"
#include "platform/geomra/PhysicalSpace.h"
#include "platform/tessaly/TransverseMercator.h"
#include <velorn/Section.h>

namespace Velorn {

class SolverParameters;
class Trajectory;

/// What went wrong with a measurement; the numbers are those of the messages.
enum class Code { none = 0, noPosition = 1, noSection = 2, noGeographicPoint = 3 };

/// A world point, and the sensor position it was measured from.
struct Georeferenced {
  Geomra::PhysicalSpace::point world;   ///< w, projected, with height [m]
  Geomra::PhysicalSpace::point sensor;  ///< p', projected, with height [m]
  Code code = Code::none;               ///< of the last step that failed
};

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
