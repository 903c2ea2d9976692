// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "trajectory/TrajectoryFragment.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "platform/morvane/Console.h"

namespace Velorn {
namespace {

using Geomra::PhysicalSpace::point;
template <typename T>
using Column = TrajectoryFragment::Column<T>;

bool isFinite(double value) {
  return std::isfinite(value);
}
bool isFinite(const point& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

std::string textOf(double value) {
  return fmt::format("{}", value);
}
std::string textOf(const point& p) {
  return fmt::format("({}, {}, {})", p.x, p.y, p.z);
}

/// Reads columns of one fragment until the first fault, which it keeps.
class Reader {
 public:
  Reader(const Strandel::Chart& chart, Strandel::FragmentId id, const std::filesystem::path& file)
      : chart_(chart), id_(id), file_(file) {}

  /// @return empty after a fault, this one or one before
  template <typename T>
  Column<T> column(const std::string& name) {
    if (!fault_.empty()) return nullptr;
    const auto field = chart_.field(name);
    if (!field) return noData(name + ": missing");
    const auto read = field->values<T>(id_);
    if (!read) return noData(read.error);
    if (rows_ && *rows_ != read.values->size()) {
      return noData(
          fmt::format("{}: {} values, Positions has {}", name, read.values->size(), *rows_));
    }
    rows_ = read.values->size();
    checkFinite(name, *read.values);
    return read.values;
  }

  const std::string& fault() const { return fault_; }

 private:
  std::nullptr_t noData(const std::string& detail) {
    Morvane::Console::writeLine(fmt::format("Trajectory::importTrajectory: {}: fragment {}: {}",
                                            file_.string(), id_.number, detail));
    fault_ = "Trajectory::importTrajectory: have no data for the current fragment";
    return nullptr;
  }

  template <typename T>
  void checkFinite(const std::string& name, const std::vector<T>& values) {
    const auto bad =
        std::find_if(values.begin(), values.end(), [](const T& v) { return !isFinite(v); });
    if (bad == values.end()) return;
    fault_ = fmt::format(
        "Trajectory::importTrajectory: {} of record {} in fragment {} is not finite: {}, in file "
        "{}",
        name, bad - values.begin(), id_.number, textOf(*bad), file_.string());
  }

  const Strandel::Chart& chart_;
  Strandel::FragmentId id_;
  const std::filesystem::path& file_;
  std::optional<std::size_t> rows_;
  std::string fault_;
};

}  // namespace

std::string readTrajectoryFragment(const Strandel::Chart& chart, Strandel::FragmentId id,
                                   const std::filesystem::path& file,
                                   TrajectoryFragment& fragment) {
  Reader reader(chart, id, file);
  TrajectoryFragment read;
  read.positions = reader.column<point>("Positions");
  read.times = reader.column<double>("GPSTime");
  read.roll = reader.column<double>("Roll");
  read.pitch = reader.column<double>("Pitch");
  read.yaw = reader.column<double>("Yaw");
  if (reader.fault().empty()) fragment = std::move(read);
  return reader.fault();
}

}  // namespace Velorn
