// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <tuple>

#include <fmt/format.h>

#include "adjustment/georef/InverseModel.h"
#include "adjustment/georef/PointWalk.h"
#include "adjustment/georef/StaticBlocks.h"
#include "adjustment/georef/StripModel.h"
#include "adjustment/georef/TimeOrder.h"
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

point pointAt(const double* numbers, std::size_t i) {
  return {numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]};
}

template <typename Triple>
void put(const Triple& triple, double* numbers, std::size_t i) {
  std::tie(numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]) =
      std::tie(triple.x, triple.y, triple.z);
}

/// Measurements of one thread to world points.
struct ToWorld {
  const StripModel& model;
  PolarCorrection correction;
  double directionLength;
  Code code = Code::none;  // of the last point that had one

  bool inFrame(const IntervalFrame& frame, const PointBatch& batch) const {
    return toWorld(frame, correction, directionLength, batch);
  }

  void alone(const PointBatch& batch, std::size_t i) {
    const auto result = model.georeference(pointAt(batch.points, i), batch.times[i]);
    put(result.world, batch.results, i);
    put(direction(result.sensor, result.world, directionLength), batch.directions, i);
    if (result.code != Code::none) code = result.code;
  }
};

/// World points of one thread to measurements.
struct ToScanner {
  const InverseModel& model;

  bool inFrame(const IntervalFrame& frame, const PointBatch& batch) const {
    return toScanner(frame, batch);
  }

  void alone(const PointBatch& batch, std::size_t i) const {
    put(model.measurementOf(pointAt(batch.points, i), batch.times[i]), batch.results, i);
  }
};

/// Whether the points of a list are so many that frames pay: those of a new place cost what some 40
/// points cost alone, and an aircraft comes to one every few seconds. All points count, so that
/// the answer does not depend on their order.
bool isDense(const std::vector<double>& times, const Trajectory& trajectory, unsigned week) {
  constexpr std::size_t fewest = 64;
  constexpr double fewestPerSecond = 10.0;
  const auto ranges = trajectory.timeRanges();
  const auto range = ranges.find(week);
  if (times.size() < fewest || range == ranges.end()) return false;
  const auto [begin, end] = range->second;
  const auto count = static_cast<double>(times.size());
  if (count > fewestPerSecond * (end - begin)) return true;
  double first = end, last = begin;
  for (const double t : times) {
    if (!(t >= begin && t <= end)) continue;
    first = std::min(first, t);
    last = std::max(last, t);
  }
  return count > fewestPerSecond * (last - first);
}

template <typename Model>
FrameSource framesOf(const Model& model, bool isWorthwhile) {
  FrameSource source{{}, model.mounting(), projectionOf(model.zone())};
  source.intervalAbout = [&model, isWorthwhile](double t) {
    return isWorthwhile ? model.intervalAbout(t) : std::nullopt;
  };
  return source;
}

/// Serves all points, on all threads; `operation()` makes what a thread does, `ended` takes it.
template <typename Operation, typename Ended>
void serve(const PointBatch& all, const FrameSource& source, const Operation& operation,
           const Ended& ended) {
  inStaticBlocks(all.count, [&](std::size_t first, std::size_t end) {
    auto own = operation();
    PointWalk walk(source);
    inOrderOfTime(partOf(all, first, end),
                  [&](const PointBatch& batch) { walk.serve(batch, own); });
    ended(own);
  });
}

}  // namespace

std::string world2scanner(const SolverParameters& parameters, const Trajectory& trajectory,
                          std::vector<point>& scannerPoints, const std::vector<double>& gpsTimes,
                          const unsigned& weekNumber, const unsigned& /*stripId*/,
                          const std::vector<point>& worldPoints) {
  const Lengths lengths{scannerPoints.size(), gpsTimes.size(), worldPoints.size()};
  if (auto fault = lengths.faultIn("world2scanner"); !fault.empty()) return fault;
  if (worldPoints.empty()) return {};
  try {
    const InverseModel model(parameters, trajectory, weekNumber);
    const PointBatch all{&worldPoints[0].x, gpsTimes.data(), &scannerPoints[0].x, nullptr,
                         worldPoints.size()};
    serve(
        all, framesOf(model, isDense(gpsTimes, trajectory, weekNumber)),
        [&] { return ToScanner{model}; }, [](const ToScanner&) {});
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
    const auto correction = polarCorrectionOf(model.mounting());
    const bool isWorthwhile = correction && isDense(gpsTimes, trajectory, weekNumber);
    const PointBatch all{&scannerPoints[0].x, gpsTimes.data(), &worldPoints[0].x, &directions[0].x,
                         scannerPoints.size()};
    std::atomic<int> code = 0;
    serve(
        all, framesOf(model, isWorthwhile),
        [&] {
          return ToWorld{model, correction.value_or(PolarCorrection{}), directionLength};
        },
        [&](const ToWorld& ended) {
          if (ended.code != Code::none) code = static_cast<int>(ended.code);  // the last one counts
        });
    return code == 0 ? std::string() : fmt::format("Error in scanner2world: Code: {}", code.load());
  } catch (const std::exception& error) {
    return fmt::format("scanner2world: {}", error.what());
  }
}

}  // namespace Velorn
