// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Planar points and rasters as files, for tests and benchmarks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <numeric>
#include <utility>
#include <vector>

#include "flight/strips/OrFail.h"
#include "flight/surfaces/MatchPoints.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"

/// Writes columns into the one grid of a container that may not exist yet.
class GridEditor {
 public:
  explicit GridEditor(std::filesystem::path file) : file_(std::move(file)) {
    if (std::filesystem::exists(file_)) Velorn::Flights::orFail(storage().load(file_, bundle_));
    if (bundle_.empty()) bundle_.makeSlice(0.0)->makeGrid("strip");
  }
  static Strandel::MyStorage storage() { return {0, 0, 1, 1}; }
  Strandel::Grid& grid() { return *bundle_.slices().front()->uniqueGrid(); }

  template <typename T>
  GridEditor& set(const char* field, std::vector<T> values,
                  const char* chart = Strandel::worldChartName) {
    Velorn::Flights::orFail(grid()
                                .makeChart(chart)
                                ->makeField(field, Strandel::valueTypeOf<T>())
                                ->template setValues<T>({0}, std::move(values)));
    return *this;
  }
  void save() { Velorn::Flights::orFail(storage().save(bundle_, file_, "wd")); }

 private:
  std::filesystem::path file_;
  Strandel::Bundle bundle_;
};

/// Writes points as the container of a strip.
inline void saveMeasured(const std::filesystem::path& file,
                         const Velorn::Flights::MatchPoints& points) {
  GridEditor editor(file);
  editor.grid().attributes().set("WeekNumber", std::int64_t{points.week});
  editor.set("Positions", points.delivered).set("GPSTime", points.times);
  editor.set("Positions", points.scanner, Strandel::scannerChartName);
  editor.set("Waveforms.DirectionDelta", points.beams, Strandel::scannerChartName);
  editor.save();
}

/// Writes normals and classes of all points of a strip as its planar points.
inline void savePlanes(const std::filesystem::path& file,
                       const Velorn::Flights::MatchPoints& points) {
  std::vector<std::uint32_t> numbers(points.normals.size());
  std::iota(numbers.begin(), numbers.end(), 0U);
  GridEditor editor(file);
  editor.set(Velorn::Flights::numbersName, std::move(numbers));
  editor.set("NormalVector", points.normals).set("RigorousClassification", points.codes);
  editor.save();
}

/// Writes points as a raster. Those without a roughness have none to speak of.
inline void saveMatchPoints(const std::filesystem::path& file,
                            Velorn::Flights::MatchPoints points) {
  points.roughness.resize(points.size());
  points.heights.resize(points.size());
  GridEditor editor(file);
  editor.grid().attributes().set("WeekNumber", std::int64_t{points.week});
  editor.set("Positions", points.delivered).set("NormalVector", points.normals);
  editor.set("GPSTime", points.times).set("RigorousClassification", points.codes);
  editor.set("Roughness", points.roughness).set("PlaneDistance", points.heights);
  editor.set("Positions", points.scanner, Strandel::scannerChartName);
  editor.set("Waveforms.DirectionDelta", points.beams, Strandel::scannerChartName);
  editor.save();
}
