// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/model/GpsRange.h"

#include <cmath>
#include <memory>
#include <optional>

#include <fmt/format.h>

#include "platform/morvane/Console.h"
#include "platform/strandel/Bundle.h"

namespace Velorn {
namespace {

constexpr double shortestStrip = 1e-6;  // [s]

std::string refused(const std::string& fault, const std::filesystem::path& path) {
  return "SolveParameters::getGPSRange: " + fault + path.string();
}

/// The bundle in a file; empty, after a message on the console, when it cannot be opened.
Strandel::BundlePtr openBundle(const std::filesystem::path& path, const InputParameter& parameter) {
  if (!parameter.Storage) {
    Morvane::Console::writeLine("SolveParameters::getGPSRange: the configuration has no Storage");
    return {};
  }
  auto bundle = std::make_shared<Strandel::Bundle>();
  const std::string fault = parameter.Storage->load(path, *bundle);
  if (fault.empty()) return bundle;
  Morvane::Console::writeLine(fault);
  return {};
}

/// A field of another type holds no times.
Strandel::FieldPtr gpsTimesOf(const Strandel::Grid& grid) {
  const auto chart = grid.chart(Strandel::scannerChartName);
  const auto field = chart ? chart->field("GPSTime") : nullptr;
  return field && field->valueType() == Strandel::ValueType::Double ? field : nullptr;
}

std::string faultOf(double first, double last, const std::filesystem::path& path) {
  if (first < 0.0) return refused("Have negative MinTime: ", path);
  if (!std::isfinite(first) || !std::isfinite(last)) {
    return refused(fmt::format("TimeRange is not finite ({} to {}): ", first, last), path);
  }
  if (std::abs(last - first) < shortestStrip) {
    return refused("Max-Min time is zerso for: ", path);
  }
  if (last < first) return refused(fmt::format("Max-Min time is {} for: ", last - first), path);
  return {};
}

std::string rangeOfGrid(const Strandel::Grid& grid, const std::filesystem::path& path,
                        GpsRange& range) {
  const auto times = gpsTimesOf(grid);
  if (!times) return refused("Have no GPSTime: ", path);
  const auto read = times->range();
  if (!read.error.empty()) Morvane::Console::writeLine(read.error);
  if (!read.range) return refused("Have no TimeRange: ", path);
  const GpsRange found{read.range->lowest(), read.range->highest()};
  if (auto fault = faultOf(found.first, found.last, path); !fault.empty()) return fault;
  range = found;
  return {};
}

}  // namespace

std::string getGPSRange(const std::filesystem::path& path, const InputParameter& parameter,
                        GpsRange& range) {
  const auto bundle = openBundle(path, parameter);
  if (!bundle) return refused("BP for File: ", path) + " is null";
  const auto grids = bundle->grids();
  if (grids.size() != 1) return refused("getNumberOfGrids > 1 for File: ", path);
  return rangeOfGrid(*grids.front(), path, range);
}

}  // namespace Velorn
