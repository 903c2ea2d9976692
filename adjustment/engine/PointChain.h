// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One measurement to its world point, and a gradient by the world point back to gradients by all
// that the point is computed from (the adjoint of the sensor model), over any scalar without
// branches: doubles, or batches of them.
//
//     const PointChain<double> chain(polar, pose, misalignment, leverArm, projection);
//     const auto gradient = chain.gradient(weight * normal);   // of weight * normal ·
//     chain.world()
#pragma once

#include <Eigen/Geometry>

#include "adjustment/engine/GridDerivative.h"
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

  /// Derivatives by the three angles of a number whose gradient by the turned vector R v is `by`:
  /// the torque (R v) × by about each axis.
  Vector3<T> angles(const Vector3<T>& turned, const Vector3<T>& by) const {
    const Vector3<T> torque = turned.cross(by);
    return {matrix(0, 0) * torque[0] + matrix(1, 0) * torque[1] + matrix(2, 0) * torque[2],
            yaw.cosine * torque[1] - yaw.sine * torque[0], torque[2]};
  }
};

/// The chain of worldPoint (georef/SensorModel.h) with its intermediate results.
template <typename T>
class PointChain {
 public:
  /// @param polar         corrected polar form q'
  /// @param pose          corrected by the section's unknowns
  /// @param misalignment, projection  must outlive this
  PointChain(const Vector3<T>& polar, const Pose<T>& pose, const Turn<T>& misalignment,
             const Vector3<T>& leverArm, const Projection& projection)
      : projection_(projection),
        misalignment_(misalignment),
        range_(polar[0]),
        first_(sineCosine(polar[1])),
        second_(sineCosine(polar[2])),
        mounted_(misalignment.matrix * bodyAxes(cartesianForm(range_, first_, second_))),
        attitude_(pose.attitude),
        level_(attitude_.matrix * (mounted_ + leverArm)),
        sensor_(placeOfProjected(pose.position, projection)),
        local_(localLevelRotation(sensor_.latitude, sensor_.longitude)),
        place_(
            placeOf(Vector3<T>(earthCentred(sensor_, projection) + local_ * level_), projection)) {}

  /// w: easting, northing, height [m].
  Vector3<T> world() const { return projected(place_, projection_); }

  /// @param by             gradient of a number by the world point
  /// @param isOfPosition   whether that by the position is asked for, which takes longest; zero
  ///                       otherwise
  PointGradient<T> gradient(const Vector3<T>& by, bool isOfPosition = true) const {
    const Vector3<T> level = local_.transpose() * earthCentredGradient(by);
    const Vector3<T> body = attitude_.matrix.transpose() * level;
    const Vector3<T> scanner = scannerAxes<T>(misalignment_.matrix.transpose() * body);
    return {polarGradient(scanner), misalignment_.angles(mounted_, body), body,
            isOfPosition ? positionGradient(level) : Vector3<T>(T(0.0), T(0.0), T(0.0)),
            attitude_.angles(level_, level)};
  }

 private:
  /// Radii of curvature: ν across the meridian and M along it [m].
  struct Radii {
    T across, along;
    Radii(const Place<T>& place, const Projection& projection) {
      using std::sqrt;
      const T w2 = 1.0 - projection.squaredEccentricity * place.latitude.sine * place.latitude.sine;
      across = projection.semiMajorAxis / sqrt(w2);
      along = across * (1.0 - projection.squaredEccentricity) / w2;
    }
  };

  /// Gradient by the earth-centred coordinates from that by the projected ones. A step north is
  /// (M + h) dφ with dψ = M / (ν cos φ) dφ, one east (ν + h) cos φ dλ.
  Vector3<T> earthCentredGradient(const Vector3<T>& by) const {
    const Radii radii(place_, projection_);
    const auto [psi, lambda] = gridDerivative(place_, projection_).isometric(by[0], by[1]);
    const T inverseCosine = 1.0 / place_.latitude.cosine;
    const Vector3<T> northEastDown(
        psi * inverseCosine * radii.along / (radii.across * (radii.along + place_.height)),
        lambda * inverseCosine / (radii.across + place_.height), -by[2]);
    return localLevelRotation(place_.latitude, place_.longitude) * northEastDown;
  }

  /// The sensor moves, and its local level turns: by dλ about the earth's axis, by dφ about west.
  Vector3<T> positionGradient(const Vector3<T>& level) const {
    const Radii radii(sensor_, projection_);
    const auto& [sp, cp] = sensor_.latitude;
    const Vector3<T> torque = level_.cross(level);
    const T phi = (radii.along + sensor_.height) * level[0] - torque[1];
    const T lambda =
        (radii.across + sensor_.height) * cp * level[1] + cp * torque[0] - sp * torque[2];
    const T psi = phi * radii.across * cp / radii.along;
    const auto [easting, northing] = gridDerivative(sensor_, projection_).grid(psi, lambda);
    return {easting, northing, -level[2]};
  }

  Vector3<T> polarGradient(const Vector3<T>& scanner) const {
    const T inPlane = second_.sine * scanner[0] + second_.cosine * scanner[2];
    return {first_.cosine * inPlane + first_.sine * scanner[1],
            range_ * (first_.cosine * scanner[1] - first_.sine * inPlane),
            range_ * first_.cosine * (second_.cosine * scanner[0] - second_.sine * scanner[2])};
  }

  const Projection& projection_;
  const Turn<T>& misalignment_;
  T range_;
  SineCosine<T> first_, second_;  // of the corrected angles
  Vector3<T> mounted_;            // M S s, body axes
  Turn<T> attitude_;
  Vector3<T> level_;  // from the sensor to the point: north, east, down at the sensor
  Place<T> sensor_;
  Matrix3<T> local_;
  Place<T> place_;  // of the point
};

}  // namespace Velorn
