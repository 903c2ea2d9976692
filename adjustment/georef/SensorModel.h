// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The sensor model over any scalar: one measurement to one world point. On doubles it gives what
// the platform's operations give; on numbers that carry derivatives, these too.
#pragma once

#include "adjustment/georef/Measurement.h"
#include "adjustment/georef/Mounting.h"
#include "adjustment/georef/TrajectoryCorrection.h"
#include "adjustment/georef/TransverseMercator.h"

namespace Velorn {

/// M S s + l: the vector from the trajectory's point to the measured one, in body axes [m].
/// @param s  corrected measurement (down, forward, right) [m]
template <typename T>
Vector3<T> bodyVector(const Vector3<T>& s, const Matrix3<T>& misalignment,
                      const Vector3<T>& leverArm) {
  return misalignment * bodyAxes(s) + leverArm;
}

/// w: easting, northing, height [m] of a measurement.
/// @param q           polar form of the measurement as recorded
/// @param pose        corrected by the section's unknowns
/// @param projection  of the trajectory and of the result
template <typename T>
Vector3<T> worldPoint(const Vector3<double>& q, const Pose<T>& pose, const Mounting<T>& mounting,
                      const Projection& projection) {
  const Vector3<T> s = cartesianForm(correctedPolarForm(q, mounting.offsets, mounting.scales));
  const Vector3<T> level =
      rotation(pose.attitude) * bodyVector(s, mounting.misalignment, mounting.leverArm);
  const Place<T> sensor = placeOfProjected(pose.position, projection);
  const Vector3<T> point = earthCentred(sensor, projection) +
                           localLevelRotation(sensor.latitude, sensor.longitude) * level;
  return projected(placeOf(point, projection), projection);
}

}  // namespace Velorn
