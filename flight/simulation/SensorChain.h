// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// From a beam in the scanner's axes to the world, with one pose and one mounting:
//   X = X(p) + C R(a) (R(m) S s + l)
// in the steps of the sensor model, each by an operation of the platform. It is written apart from
// the library's, so that one can be held against the other.
#pragma once

#include <Eigen/Core>

#include "platform/geomra/PhysicalSpace.h"
#include "platform/tessaly/TransverseMercator.h"

namespace Velorn::Flights::Simulation {

using Projection = Tessaly::TransverseMercatorProjectionParameter;

/// Where the sensor is and how the aircraft lies.
struct Pose {
  Geomra::PhysicalSpace::point position;   ///< projected, ellipsoidal height [m]
  Geomra::PhysicalSpace::vector attitude;  ///< roll, pitch, yaw [rad]
};

/// The lines in space along which a scanner measures at one pose.
class Beams {
 public:
  /// @param misalignment  m, about the body's axes [rad]
  /// @param leverArm      l, body axes [m]
  Beams(const Pose& pose, const Eigen::Vector3d& misalignment, const Eigen::Vector3d& leverArm,
        const Projection& projection);

  /// Projected point of a measurement.
  /// @param scanner  s: (down, forward, right) [m]
  Geomra::PhysicalSpace::point world(const Geomra::PhysicalSpace::point& scanner) const;

  /// How far below the sensor a measurement lies, in the level of the sensor, and the lever arm
  /// left out [m]; linear in s.
  double depth(const Geomra::PhysicalSpace::point& scanner) const;

 private:
  Projection projection_;
  Eigen::Vector3d origin_;  // earth-centred [m]
  Eigen::Matrix3d earthFromScanner_;
  Eigen::Vector3d down_;  // earth-centred unit vector
};

/// Azimuth of grid north at a place, clockwise from true north [rad].
double azimuthOfGridNorth(const Geomra::PhysicalSpace::point& projected,
                          const Projection& projection);

}  // namespace Velorn::Flights::Simulation
