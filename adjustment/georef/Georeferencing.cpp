// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <Eigen/LU>
#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>

#include <fmt/format.h>

#include "adjustment/georef/PhysicalSpace.h"
#include "adjustment/georef/PointWalk.h"
#include "adjustment/georef/StaticBlocks.h"
#include "adjustment/georef/StripModel.h"
#include "platform/tessaly/EarthCentredCoordinates.h"
#include <velorn/Georeferencing.h>

namespace Velorn {
namespace {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

/// Numbers of values that must be equal.
struct Lengths {
  std::size_t scannerPoints, times, worldPoints;

  std::string faultIn(const char* operation) const {
    if (times == scannerPoints && worldPoints == scannerPoints) return {};
    return fmt::format(
        "{}: {} scanner points, {} GPS times and {} world points are not equally many", operation,
        scannerPoints, times, worldPoints);
  }
};

/// The difference p' − w, or a vector of that direction; by the largest component, so that no
/// square overflows.
vector direction(const point& sensor, const point& world, double length) {
  const vector full = sensor - world;
  if (length == 0.0) return full;
  const double largest = std::max({std::abs(full.x), std::abs(full.y), std::abs(full.z)});
  const vector scaled{full.x / largest, full.y / largest, full.z / largest};
  return length / largest / std::sqrt(dot(scaled, scaled)) * full;
}

/// Scanner coordinates of world points measured at one pose.
class InverseModel {
 public:
  InverseModel(const Trajectory& trajectory, const Mounting<double>& mounting)
      : zone_(trajectory.getMercator()),
        fromBody_(mounting.misalignment.inverse()),
        leverArm_(mounting.leverArm) {}

  point measurementOf(const point& world, const point& sensor, const vector& attitude) const {
    const point place = Tessaly::inverseTransverseMercatorProjection(sensor, zone_, false);
    const Vector3<double> difference =
        vectorOf(Tessaly::ellipsoidalToCartesian(
            Tessaly::inverseTransverseMercatorProjection(world, zone_, true), zone_.getEllipsoid(),
            true)) -
        vectorOf(Tessaly::ellipsoidalToCartesian(place, zone_.getEllipsoid(), false));
    const Matrix3<double> level = localLevelRotation(sineCosine(place.y), sineCosine(place.x));
    const Matrix3<double> n = rotation(vectorOf(attitude));
    const Vector3<double> body =
        fromBody_ * (n.inverse() * (level.inverse() * difference) - leverArm_);
    return pointOf(scannerAxes(body));
  }

 private:
  Tessaly::TransverseMercatorProjectionParameter zone_;
  Matrix3<double> fromBody_;
  Vector3<double> leverArm_;
};

}  // namespace

std::string world2scanner(const SolverParameters& parameters, const Trajectory& trajectory,
                          std::vector<point>& scannerPoints, const std::vector<double>& gpsTimes,
                          const unsigned& weekNumber, const unsigned& /*stripId*/,
                          const std::vector<point>& worldPoints) {
  const Lengths lengths{scannerPoints.size(), gpsTimes.size(), worldPoints.size()};
  if (auto fault = lengths.faultIn("world2scanner"); !fault.empty()) return fault;
  if (worldPoints.empty()) return {};
  try {
    const InverseModel model(trajectory, uncorrectedMountingOf(parameters));
    inStaticBlocks(worldPoints.size(), [&](std::size_t first, std::size_t end) {
      for (std::size_t i = first; i < end; ++i) {
        point sensor;
        vector attitude;
        // A time without a position is told on the console; its point is computed all the same.
        trajectory.interpolateTrajectory(gpsTimes[i], weekNumber, sensor, attitude, false);
        scannerPoints[i] = model.measurementOf(worldPoints[i], sensor, attitude);
      }
    });
    return {};
  } catch (const std::exception& error) {
    return fmt::format("world2scanner: {}", error.what());
  }
}

std::string scanner2world(const SolverParameters& parameters, const Trajectory& trajectory,
                          const std::vector<point>& scannerPoints,
                          const std::vector<double>& gpsTimes, const unsigned& weekNumber,
                          const unsigned& stripId, std::vector<point>& worldPoints,
                          std::vector<vector>& directions, const double& directionLength,
                          const bool& interpolationFlag) {
  const Lengths lengths{scannerPoints.size(), gpsTimes.size(), worldPoints.size()};
  if (auto fault = lengths.faultIn("scanner2world"); !fault.empty()) return fault;
  if (directions.size() != scannerPoints.size()) {
    return fmt::format("scanner2world: {} directions are not as many as the {} scanner points",
                       directions.size(), scannerPoints.size());
  }
  if (scannerPoints.empty()) return {};
  try {
    const StripModel model(parameters, trajectory, weekNumber, stripId, interpolationFlag);
    std::atomic<int> code = 0;
    inStaticBlocks(scannerPoints.size(), [&](std::size_t first, std::size_t end) {
      PointWalk walk(model, scannerPoints, gpsTimes, first);
      for (std::size_t i = first; i < end; ++i) {
        const auto result = walk.georeference(i);
        worldPoints[i] = result.world;
        directions[i] = direction(result.sensor, result.world, directionLength);
        if (result.code != Code::none) code = static_cast<int>(result.code);  // the last one counts
      }
    });
    return code == 0 ? std::string() : fmt::format("Error in scanner2world: Code: {}", code.load());
  } catch (const std::exception& error) {
    return fmt::format("scanner2world: {}", error.what());
  }
}

}  // namespace Velorn
