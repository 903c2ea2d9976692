// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Trajectory containers for tests.
#pragma once

#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"

/// Of every flight here.
inline constexpr unsigned gpsWeek = 2318;

struct Record {
  double time;  // [s of week]
  Geomra::PhysicalSpace::point position;
  Geomra::PhysicalSpace::vector degrees;  // roll, pitch, yaw
};

/// A record whose position and attitude follow from one number.
inline Record recordOf(double time, double x) {
  return {time, {x, 2 * x, 3 * x}, {x / 10, x / 20, x / 30}};
}

inline std::vector<Record> recordsAt(const std::vector<double>& times, double firstX = 0) {
  std::vector<Record> records;
  records.reserve(times.size());
  for (const double time : times) {
    records.push_back(recordOf(time, firstX + 10 * static_cast<double>(records.size())));
  }
  return records;
}

/// A trajectory in memory: slices with one grid each, with everything that the import asks for.
class TrajectoryFile {
 public:
  /// @param fragments  records by fragment
  explicit TrajectoryFile(const std::vector<std::vector<Record>>& fragments = {},
                          std::int64_t week = gpsWeek, double sliceTime = 0) {
    addSlice(fragments, week, sliceTime);
  }

  void addSlice(const std::vector<std::vector<Record>>& fragments, std::int64_t week, double time) {
    const auto world =
        bundle.makeSlice(time)->makeGrid("path")->makeChart(Strandel::worldChartName);
    auto& attributes = world->attributes();
    attributes.set("EPSG_SPATIAL", std::int64_t{32632});
    attributes.set("EPSG_HEIGHT", std::int64_t{4979});
    attributes.set("WeekNumber", week);
    attributes.set("LeverArm", Geomra::PhysicalSpace::point{0.1, 0.2, 0.3});
    attributes.set("Misalignment", Geomra::PhysicalSpace::point{0.5, -0.25, 90.0});
    using Strandel::ValueType;
    world->makeField("Positions", ValueType::Point);
    for (const char* name : {"GPSTime", "Roll", "Pitch", "Yaw"}) {
      world->makeField(name, ValueType::Double);
    }
    for (std::uint32_t i = 0; i < fragments.size(); ++i) {
      fill<Geomra::PhysicalSpace::point>(*world, "Positions", i, fragments[i],
                                         [](const Record& r) { return r.position; });
      fill<double>(*world, "GPSTime", i, fragments[i], [](const Record& r) { return r.time; });
      fill<double>(*world, "Roll", i, fragments[i], [](const Record& r) { return r.degrees.x; });
      fill<double>(*world, "Pitch", i, fragments[i], [](const Record& r) { return r.degrees.y; });
      fill<double>(*world, "Yaw", i, fragments[i], [](const Record& r) { return r.degrees.z; });
    }
  }

  Strandel::ChartPtr chart(double sliceTime = 0) const {
    return bundle.slice(sliceTime)->uniqueGrid()->cartesian();
  }

  std::filesystem::path save(const std::filesystem::path& path) {
    const auto fault = Strandel::MyStorage(0, 0, 1, 1).save(bundle, path, "wd");
    if (!fault.empty()) throw std::runtime_error(fault);
    return path;
  }

  Strandel::Bundle bundle;

 private:
  template <typename T, typename Of>
  static void fill(Strandel::Chart& chart, const std::string& name, std::uint32_t fragment,
                   const std::vector<Record>& records, Of of) {
    std::vector<T> values;
    values.reserve(records.size());
    for (const auto& record : records) values.push_back(of(record));
    chart.field(name)->setValues<T>({fragment}, std::move(values));
  }
};
