// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/SensorChain.h"

#include <Eigen/Geometry>
#include <cmath>

#include "platform/tessaly/EarthCentredCoordinates.h"

namespace Velorn::Flights::Simulation {
namespace {

using Eigen::Matrix3d;
using Eigen::Vector3d;
using Geomra::PhysicalSpace::point;

/// Rz(z) Ry(y) Rx(x).
Matrix3d turned(double x, double y, double z) {
  return (Eigen::AngleAxisd(z, Vector3d::UnitZ()) * Eigen::AngleAxisd(y, Vector3d::UnitY()) *
          Eigen::AngleAxisd(x, Vector3d::UnitX()))
      .toRotationMatrix();
}

/// Columns: north, east and down at a geographic place, earth-centred.
Matrix3d localLevel(const point& geographic) {
  const double sinLon = std::sin(geographic.x), cosLon = std::cos(geographic.x);
  const double sinLat = std::sin(geographic.y), cosLat = std::cos(geographic.y);
  const Vector3d down(-cosLat * cosLon, -cosLat * sinLon, -sinLat);
  const Vector3d east(-sinLon, cosLon, 0.0);
  Matrix3d level;
  level << east.cross(down), east, down;
  return level;
}

Vector3d earthCentred(const point& geographic, const Projection& projection) {
  const point p = Tessaly::ellipsoidalToCartesian(geographic, projection.getEllipsoid(), false);
  return {p.x, p.y, p.z};
}

}  // namespace

Beams::Beams(const Pose& pose, const Vector3d& misalignment, const Vector3d& leverArm,
             const Projection& projection)
    : projection_(projection) {
  const point place =
      Tessaly::inverseTransverseMercatorProjection(pose.position, projection, false);
  const Matrix3d level = localLevel(place);
  const auto& a = pose.attitude;
  const Matrix3d earthFromBody = level * turned(a.x, a.y, a.z);
  origin_ = earthCentred(place, projection) + earthFromBody * leverArm;
  const Matrix3d mounted =
      earthFromBody * turned(misalignment[0], misalignment[1], misalignment[2]);
  // The scanner's axes are down, forward and right, the body's forward, right and down.
  earthFromScanner_ << mounted.col(2), mounted.col(0), mounted.col(1);
  down_ = level.col(2);
}

point Beams::world(const point& scanner) const {
  const Vector3d x = origin_ + earthFromScanner_ * Vector3d(scanner.x, scanner.y, scanner.z);
  const auto [place, converged] = Tessaly::cartesianToEllipsoidalWithConvergedInfo(
      {x[0], x[1], x[2]}, projection_.getEllipsoid(), false);
  return Tessaly::transverseMercatorProjection(place, projection_, false);
}

double Beams::depth(const point& scanner) const {
  return down_.dot(earthFromScanner_ * Vector3d(scanner.x, scanner.y, scanner.z));
}

double azimuthOfGridNorth(const point& projected, const Projection& projection) {
  const auto geographic = [&](double metres) {
    return Tessaly::inverseTransverseMercatorProjection(
        {projected.x, projected.y + metres, projected.z}, projection, false);
  };
  const Vector3d step =
      earthCentred(geographic(10.0), projection) - earthCentred(geographic(-10.0), projection);
  const Vector3d level = localLevel(geographic(0.0)).transpose() * step;
  return std::atan2(level[1], level[0]);
}

}  // namespace Velorn::Flights::Simulation
