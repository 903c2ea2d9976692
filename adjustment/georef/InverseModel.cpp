// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/InverseModel.h"

#include <Eigen/LU>
#include <limits>

#include "adjustment/georef/PhysicalSpace.h"
#include "platform/tessaly/EarthCentredCoordinates.h"
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>

namespace Velorn {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

InverseModel::InverseModel(const SolverParameters& parameters, const Trajectory& trajectory,
                           unsigned int week)
    : trajectory_(trajectory),
      week_(week),
      mounting_(uncorrectedMountingOf(parameters)),
      zone_(trajectory.getMercator()),
      fromBody_(mounting_.misalignment.inverse()) {}

point InverseModel::measurementOf(const point& world, double t) const {
  point sensor;
  vector attitude;
  trajectory_.interpolateTrajectory(t, week_, sensor, attitude, false);
  const point place = Tessaly::inverseTransverseMercatorProjection(sensor, zone_, false);
  const Vector3<double> difference =
      vectorOf(Tessaly::ellipsoidalToCartesian(
          Tessaly::inverseTransverseMercatorProjection(world, zone_, true), zone_.getEllipsoid(),
          true)) -
      vectorOf(Tessaly::ellipsoidalToCartesian(place, zone_.getEllipsoid(), false));
  const Matrix3<double> level = localLevelRotation(sineCosine(place.y), sineCosine(place.x));
  const Matrix3<double> n = rotation(vectorOf(attitude));
  const Vector3<double> body =
      fromBody_ * (n.inverse() * (level.inverse() * difference) - mounting_.leverArm);
  return pointOf(scannerAxes(body));
}

std::optional<Interval> InverseModel::intervalAbout(double t) const {
  const auto records = trajectory_.recordsAbout(t, week_);
  if (!records) return {};
  const auto& [before, after] = *records;
  return Interval{{vectorOf(before.position), vectorOf(before.attitude)},
                  {vectorOf(after.position), vectorOf(after.attitude)},
                  before.time,
                  after.time,
                  {},
                  before.time,
                  std::numeric_limits<double>::infinity()};
}

}  // namespace Velorn
