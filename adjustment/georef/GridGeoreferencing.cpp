// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/GridGeoreferencing.h"

#include <algorithm>
#include <cmath>
#include <set>

#include <fmt/format.h>

#include "platform/morvane/Console.h"
#include "platform/strandel/Bundle.h"
#include <velorn/Georeferencing.h>

namespace Velorn {
namespace {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;
using Strandel::ValueType;

constexpr const char* positions = "Positions";
constexpr const char* directionDelta = "Waveforms.DirectionDelta";
constexpr const char* groupVelocity = "Scanner Group Velocity";
constexpr const char* sampleInterval = "WaveformSampleInterval";

/// A field of another type holds something else under that name.
Strandel::FieldPtr fieldOf(const Strandel::ChartPtr& chart, const char* name, ValueType type) {
  const auto field = chart ? chart->field(name) : nullptr;
  return field && field->valueType() == type ? field : nullptr;
}

template <Strandel::Value T>
std::shared_ptr<const std::vector<T>> read(const Strandel::Field& field,
                                           Strandel::FragmentId fragment) {
  auto column = field.values<T>(fragment);
  if (!column) throw UnreadableColumn(column.error);
  return column.values;
}

/// Puts results into a chart. A field that the results came from (in a foreign file both charts may
/// link to one field) stays the other chart's, and this chart gets one of its own.
template <Strandel::Value T>
Strandel::FieldPtr write(Strandel::Chart& chart, const char* name, Strandel::FragmentId fragment,
                         std::vector<T> values, const Strandel::FieldPtr& source) {
  if (chart.field(name) == source) chart.removeField(name);
  auto field = chart.makeField(name, Strandel::valueTypeOf<T>());
  field->template setValues<T>(fragment, std::move(values));
  return field;
}

std::size_t notFinite(const std::vector<point>& points) {
  const auto isNotFinite = [](const point& p) {
    return !std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z);
  };
  return static_cast<std::size_t>(std::count_if(points.begin(), points.end(), isNotFinite));
}

/// Of an operation on points: whether it set any. It does so for all, also those with a code.
bool hasComputed(const std::string& message) {
  return message.empty() || message.starts_with("Error in scanner2world: Code: ");
}

class GridGeoreferencing {
 public:
  GridGeoreferencing(Strandel::Grid& grid, const StripTask& task) : grid_(grid), task_(task) {}

  std::string run() {
    using Step = std::string (GridGeoreferencing::*)();
    for (const Step step :
         {&GridGeoreferencing::findWeek, &GridGeoreferencing::findScannerChart,
          &GridGeoreferencing::findDirectionLength, &GridGeoreferencing::findScannerFields,
          &GridGeoreferencing::findWorldPoints}) {
      if (auto fault = (this->*step)(); !fault.empty()) return fault;
    }
    return computeFragments();
  }

 private:
  std::string findWeek() {
    const auto week = grid_.attributes().unsigned32("WeekNumber");
    if (!week) return "scanner2world: Have no WeekNumber attribute for this strip";
    week_ = *week;
    if (task_.trajectory.week_number_exists(week_)) return {};
    return fmt::format("The weeknumber {}of strip name {}({})is not part of the trajectory", week_,
                       task_.file, task_.index);
  }

  std::string findScannerChart() {
    scannerChart_ = grid_.chart(Strandel::scannerChartName);
    return scannerChart_ ? "" : "scanner2world: Have no scanner_chart";
  }

  /// Half the product of group velocity and sample interval, which wraps at 32 bits; 0 without the
  /// two.
  std::string findDirectionLength() {
    if (task_.inverse || !grid_.waveforms()) return {};
    const auto& attributes = grid_.waveforms()->attributes();
    for (const char* name : {groupVelocity, sampleInterval}) {
      const auto value = attributes.integer(name);
      if (value && !attributes.unsigned32(name)) {
        return fmt::format("scanner2world: {}: the attribute {} is {}, outside 0 to 4294967295",
                           task_.file, name, *value);
      }
    }
    const auto velocity = attributes.unsigned32(groupVelocity);
    const auto interval = attributes.unsigned32(sampleInterval);
    if (velocity && interval) directionLength_ = 0.5 * static_cast<double>(*velocity * *interval);
    return {};
  }

  /// The times of a foreign file may be in the world chart only.
  std::string findScannerFields() {
    scannerPoints_ = fieldOf(scannerChart_, positions, ValueType::Point);
    if (!scannerPoints_) return "scanner2world: Have no ScannerCoordsF";
    times_ = fieldOf(scannerChart_, "GPSTime", ValueType::Double);
    if (!times_) times_ = fieldOf(grid_.cartesian(), "GPSTime", ValueType::Double);
    if (!times_ || scannerPoints_->fragments().empty()) {
      return "scanner2world: Have no scanner chunks!";
    }
    return {};
  }

  std::string findWorldPoints() {
    worldPoints_ = fieldOf(grid_.cartesian(), positions, ValueType::Point);
    const bool missing = !worldPoints_ || worldPoints_->fragments().empty();
    return task_.inverse && missing ? "scanner2world: Have no world chunks!" : "";
  }

  std::string computeFragments() {
    std::string message;
    for (const auto fragment : fragments()) {
      auto fault = missingIn(fragment);
      if (fault.empty()) fault = task_.inverse ? toScanner(fragment) : toWorld(fragment);
      if (!fault.empty()) message = std::move(fault);
    }
    tellNotFinite();
    return message;
  }

  /// Those of any of the fields, so that none keeps old points unnoticed.
  std::set<Strandel::FragmentId> fragments() const {
    std::set<Strandel::FragmentId> all;
    for (const auto& field : {scannerPoints_, times_, worldPoints_}) {
      if (!field) continue;
      for (const auto fragment : field->fragments()) all.insert(fragment);
    }
    return all;
  }

  std::string missingIn(Strandel::FragmentId fragment) const {
    if (!scannerPoints_->hasChunk(fragment)) return "scanner2world: Have no scanner-coords chunk!";
    if (!times_->hasChunk(fragment)) return "scanner2world: Have no scanner chunks!";
    if (task_.inverse && !worldPoints_->hasChunk(fragment)) {
      return "worldToScannerCoordinates: Have no chunks!";
    }
    return {};
  }

  std::string toWorld(Strandel::FragmentId fragment) {
    const auto scanner = read<point>(*scannerPoints_, fragment);
    const auto times = read<double>(*times_, fragment);
    count(*scanner);
    std::vector<point> world(scanner->size());
    std::vector<vector> directions(scanner->size());
    auto message =
        scanner2world(task_.parameters, task_.trajectory, *scanner, *times, week_, task_.index,
                      world, directions, directionLength_, task_.interpolationFlag);
    if (!hasComputed(message)) return message;
    const auto worldChart = grid_.makeChart(Strandel::worldChartName);
    write<point>(*worldChart, positions, fragment, std::move(world), scannerPoints_);
    write<vector>(*scannerChart_, directionDelta, fragment, std::move(directions), nullptr);
    return message;
  }

  std::string toScanner(Strandel::FragmentId fragment) {
    const auto world = read<point>(*worldPoints_, fragment);
    const auto times = read<double>(*times_, fragment);
    count(*world);
    std::vector<point> scanner(world->size());
    auto message = world2scanner(task_.parameters, task_.trajectory, scanner, *times, week_,
                                 task_.index, *world);
    if (!hasComputed(message)) return message;
    write<point>(*scannerChart_, positions, fragment, std::move(scanner), worldPoints_)
        ->attributes()
        .set("ScannerCoordsModified", std::int64_t{1});
    return message;
  }

  void count(const std::vector<point>& points) {
    points_ += points.size();
    notFinite_ += notFinite(points);
  }

  void tellNotFinite() const {
    if (notFinite_ == 0) return;
    Morvane::Console::writeLine(fmt::format("scanner2world: {}: {} of {} {} points are not finite",
                                            task_.file, notFinite_, points_,
                                            task_.inverse ? "world" : "scanner"));
  }

  Strandel::Grid& grid_;
  const StripTask& task_;
  unsigned week_ = 0;
  double directionLength_ = 0.0;
  Strandel::ChartPtr scannerChart_;
  Strandel::FieldPtr scannerPoints_, times_, worldPoints_;
  std::size_t points_ = 0, notFinite_ = 0;
};

}  // namespace

std::string georeference(Strandel::Grid& grid, const StripTask& task) {
  return GridGeoreferencing(grid, task).run();
}

}  // namespace Velorn
