// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/StripModel.h"

#include "adjustment/georef/PhysicalSpace.h"
#include "platform/tessaly/EarthCentredCoordinates.h"
#include "platform/tessaly/PolarCoordinates.h"
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>

namespace Velorn {
namespace {

using Geomra::PhysicalSpace::point;

constexpr UsedPowers fullCubic{4, 4};

SectionCorrections<double> correctionsOf(const SolverParameters& parameters, unsigned int section) {
  SectionCorrections<double> corrections;
  for (unsigned int i = 0; i < 12; ++i) {
    corrections.position[i] = parameters.getTrajectoryPositionCorrection(section, i);
    corrections.angles[i] = parameters.getTrajectoryAngleCorrection(section, i);
  }
  return corrections;
}

/// s(q'): the measurement with corrected range and angles.
Vector3<double> correctedMeasurement(const point& scanner, const Mounting<double>& mounting) {
  const Vector3<double> q = vectorOf(Tessaly::polarCoordinatesFromCartesian(scanner));
  const Vector3<double> corrected =
      (q.array() * (1.0 + mounting.scales.array())).matrix() + mounting.offsets;
  return vectorOf(Tessaly::cartesianCoordinatesFromPolar(pointOf(corrected)));
}

}  // namespace

StripModel::StripModel(const SolverParameters& parameters, const Trajectory& trajectory,
                       unsigned int week, unsigned int strip, bool report)
    : parameters_(parameters),
      trajectory_(trajectory),
      week_(week),
      strip_(strip),
      report_(report),
      mounting_(mountingOf(parameters)),
      zone_(trajectory.getMercator()) {}

Pose<double> StripModel::poseAt(double t, Code& code) const {
  point position;
  Geomra::PhysicalSpace::vector attitude;
  if (!trajectory_.interpolateTrajectory(t, week_, position, attitude, report_)) {
    code = Code::noPosition;
  }
  Pose<double> pose{vectorOf(position), vectorOf(attitude)};
  const Section section = parameters_.getSectionInStrip(strip_, t);
  if (section.invalid) {
    code = Code::noSection;
    return pose;
  }
  const auto corrections = correctionsOf(parameters_, section.sectionID);
  return correctedPose(pose, corrections.position.data(), corrections.angles.data(), fullCubic,
                       t - section.t);
}

std::optional<Interval> StripModel::intervalAbout(double t) const {
  const auto records = trajectory_.recordsAbout(t, week_);
  const auto span = parameters_.findSection(strip_, t);
  if (!records || !span) return {};
  const auto& [before, after] = *records;
  return Interval{{vectorOf(before.position), vectorOf(before.attitude)},
                  {vectorOf(after.position), vectorOf(after.attitude)},
                  before.time,
                  after.time,
                  correctionsOf(parameters_, span->section.sectionID),
                  span->section.t,
                  span->end};
}

Georeferenced StripModel::georeference(const point& scanner, double t) const {
  Georeferenced result;
  const Pose<double> pose = poseAt(t, result.code);
  result.sensor = pointOf(pose.position);
  const Vector3<double> body =
      mounting_.misalignment * bodyAxes(correctedMeasurement(scanner, mounting_)) +
      mounting_.leverArm;
  const Vector3<double> level = rotation(pose.attitude) * body;

  const point geographic =
      Tessaly::inverseTransverseMercatorProjection(result.sensor, zone_, false);
  const auto ellipsoid = zone_.getEllipsoid();
  const Vector3<double> sensor =
      vectorOf(Tessaly::ellipsoidalToCartesian(geographic, ellipsoid, false));
  const Matrix3<double> c = localLevelRotation(sineCosine(geographic.y), sineCosine(geographic.x));
  const auto [place, converged] = Tessaly::cartesianToEllipsoidalWithConvergedInfo(
      pointOf(sensor + c * level), ellipsoid, true);
  if (!converged) result.code = Code::noGeographicPoint;
  result.world = Tessaly::transverseMercatorProjection(place, zone_, true);
  return result;
}

}  // namespace Velorn
