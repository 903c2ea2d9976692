// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The georeferencing of one measurement under unknowns that a solver changes.
#pragma once

#include <memory>
#include <string>

#include "adjustment/georef/SensorModel.h"
#include <velorn/Section.h>
#include <velorn/SphericalBeing.h>

namespace Velorn {

class Trajectory;

/// The unknowns that all measurements of an evaluation have in common.
template <typename T>
Mounting<T> mountingOf(const T* offsets, const T* scales, const T* misalignment,
                       const T* leverArm) {
  using Map = Eigen::Map<const Vector3<T>>;
  return {Map(offsets), Map(scales), rotation(Vector3<T>(Map(misalignment))), Map(leverArm)};
}

/// A measurement, and of its georeferencing whatever holds no unknown: the polar form, the pose
/// between two records of the trajectory, the time since the start of the section. Nothing of it
/// changes afterwards, so that any number of threads may evaluate it.
class GeoTransformationCeresReborn {
 public:
  /// @param week               GPS week of the measurement
  /// @param section            of its strip and time
  /// @param interpolationFlag  see Trajectory::interpolateTrajectory
  /// @param projection         of the trajectory
  GeoTransformationCeresReborn(const Trajectory& trajectory, const SphericalBeing& measurement,
                               unsigned int week, const Section& section, bool interpolationFlag,
                               std::shared_ptr<const Projection> projection);

  /// The world point: easting, northing, height [m].
  /// @param position, angles  the twelve coefficients of the section each; a type's unused ones do
  ///                          not take part
  /// @return empty, or why there is none; `world` is then zero with all derivatives
  template <typename T>
  std::string operator()(const Mounting<T>& mounting, const T* position, const T* angles,
                         Vector3<T>& world) const {
    if (!isInterpolated_) {
      world = Vector3<T>(T(0.0), T(0.0), T(0.0));
      return "GeoTransformationCeresReborn: linear interpolation of failed";
    }
    world = worldPoint(polarForm_, correctedPose(pose_, position, angles, used_, dt_), mounting,
                       *projection_);
    return {};
  }

 private:
  std::shared_ptr<const Projection> projection_;
  Vector3<double> polarForm_;  // of the measurement as recorded
  Pose<double> pose_;          // without corrections
  double dt_;                  // since the start of the section [s]
  UsedPowers used_;
  bool isInterpolated_;
};

}  // namespace Velorn
