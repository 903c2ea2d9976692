// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/GeoTransformationCeresReborn.h"

#include <utility>

#include "adjustment/georef/PhysicalSpace.h"
#include "platform/tessaly/PolarCoordinates.h"
#include <velorn/Trajectory.h>

namespace Velorn {

GeoTransformationCeresReborn::GeoTransformationCeresReborn(
    const Trajectory& trajectory, const SphericalBeing& measurement, unsigned int week,
    const Section& section, bool interpolationFlag, std::shared_ptr<const Projection> projection)
    : projection_(std::move(projection)),
      polarForm_(vectorOf(Tessaly::polarCoordinatesFromCartesian(measurement.scannerPosition))),
      dt_(measurement.gpsTime - section.t),
      used_(usedPowers(section.type)) {
  Geomra::PhysicalSpace::point position;
  Geomra::PhysicalSpace::vector attitude;
  isInterpolated_ = trajectory.interpolateTrajectory(measurement.gpsTime, week, position, attitude,
                                                     interpolationFlag);
  pose_ = {vectorOf(position), vectorOf(attitude)};
}

}  // namespace Velorn
