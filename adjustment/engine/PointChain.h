// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One measurement to its world point, and a gradient by the world point back to gradients by all
// that the point is computed from (the adjoint of the sensor model), over any scalar without
// branches: doubles, or batches of them.
//
//     const PointChain chain(polar, pose, misalignment, leverArm, ExactEarth(projection));
//     const auto gradient = chain.gradient(weight * normal);  // of weight * normal · chain.world()
#pragma once

#include <Eigen/Geometry>

#include "adjustment/engine/ExactEarth.h"
#include "adjustment/georef/Measurement.h"
#include "adjustment/georef/SensorModel.h"

namespace Velorn {

/// Derivatives of one number by what a world point is computed from.
template <typename T>
struct PointGradient {
  Vector3<T> polar;         ///< corrected polar form q'
  Vector3<T> misalignment;  ///< m
  Vector3<T> leverArm;      ///< l
  Vector3<T> position;      ///< corrected position p'
  Vector3<T> attitude;      ///< corrected attitude a'
};

/// A rotation R = Rz Ry Rx with the axes about which its three angles turn the result.
template <typename T>
struct Turn {
  Matrix3<T> matrix;
  SineCosine<T> yaw;

  explicit Turn(const Vector3<T>& angles) : yaw(sineCosine(angles[2])) {
    matrix = rotation(sineCosine(angles[0]), sineCosine(angles[1]), yaw);
  }

  /// The same turn in all lanes of a batch.
  template <typename Single>
  explicit Turn(const Turn<Single>& single) : yaw{T(single.yaw.sine), T(single.yaw.cosine)} {
    for (int i = 0; i < 9; ++i) matrix.data()[i] = T(single.matrix.data()[i]);
  }

  /// Derivatives by the three angles of a number: the part of a torque about the axis of each.
  /// @param torque  (R v) × its gradient by the turned vector R v
  Vector3<T> angles(const Vector3<T>& torque) const {
    return {matrix(0, 0) * torque[0] + matrix(1, 0) * torque[1] + matrix(2, 0) * torque[2],
            yaw.cosine * torque[1] - yaw.sine * torque[0], torque[2]};
  }
};

/// The chain of worldPoint (georef/SensorModel.h) with its intermediate results.
/// @tparam Earth  ExactEarth or LocalEarth
template <typename T, typename Earth>
class PointChain {
 public:
  /// @param polar         corrected polar form q'
  /// @param pose          corrected by the section's unknowns; its position off the earth's
  /// centre()
  /// @param misalignment  must outlive this, and so must what the earth refers to
  PointChain(const Vector3<T>& polar, const Pose<T>& pose, const Turn<T>& misalignment,
             const Vector3<T>& leverArm, const Earth& earth)
      : misalignment_(misalignment),
        range_(polar[0]),
        first_(sineCosine(polar[1])),
        second_(sineCosine(polar[2])),
        mounted_(misalignment.matrix * bodyAxes(cartesianForm(range_, first_, second_))),
        attitude_(pose.attitude),
        level_(attitude_.matrix * (mounted_ + leverArm)),
        sensor_(earth, pose.position),
        point_(earth, sensor_.earthCentred() + sensor_.localLevel() * level_) {}

  /// w: easting, northing, height off the earth's centre() [m].
  Vector3<T> world() const { return point_.world(); }

  /// @param by             gradient of a number by the world point
  /// @param isOfPosition   whether that by the position is asked for; zero otherwise
  PointGradient<T> gradient(const Vector3<T>& by, bool isOfPosition = true) const {
    const Vector3<T> level = sensor_.localLevel().transpose() * point_.gradient(by);
    const Vector3<T> body = attitude_.matrix.transpose() * level;
    const Vector3<T> scanner = scannerAxes<T>(misalignment_.matrix.transpose() * body);
    const Vector3<T> torque = level_.cross(level);
    return {polarGradient(scanner), misalignment_.angles(mounted_.cross(body)), body,
            isOfPosition ? sensor_.gradient(level, torque) : Vector3<T>(T(0.0), T(0.0), T(0.0)),
            attitude_.angles(torque)};
  }

  /// Whether a local earth is good here.
  auto isNear() const { return sensor_.isNear() && point_.isNear(); }

 private:
  Vector3<T> polarGradient(const Vector3<T>& scanner) const {
    const T inPlane = second_.sine * scanner[0] + second_.cosine * scanner[2];
    return {first_.cosine * inPlane + first_.sine * scanner[1],
            range_ * (first_.cosine * scanner[1] - first_.sine * inPlane),
            range_ * first_.cosine * (second_.cosine * scanner[0] - second_.sine * scanner[2])};
  }

  const Turn<T>& misalignment_;
  T range_;
  SineCosine<T> first_, second_;  // of the corrected angles
  Vector3<T> mounted_;            // M S s, body axes
  Turn<T> attitude_;
  Vector3<T> level_;  // from the sensor to the point: north, east, down at the sensor
  typename Earth::template Sensor<T> sensor_;
  typename Earth::template Point<T> point_;
};

}  // namespace Velorn
