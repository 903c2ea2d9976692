// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/trajectory/TrajectoryFragment.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "platform/morvane/Console.h"

namespace Velorn {
namespace {

using Geomra::PhysicalSpace::point;

bool isFinite(double value) {
  return std::isfinite(value);
}

std::string textOf(double value) {
  return fmt::format("{}", value);
}
std::string textOf(const point& p) {
  return fmt::format("({}, {}, {})", p.x, p.y, p.z);
}

}  // namespace

TrajectoryFragment::TrajectoryFragment(const Strandel::Chart& chart, Strandel::FragmentId id,
                                       const std::filesystem::path& file)
    : chart_(chart), id_(id), file_(file) {
  if (const auto field = chart.field("Positions")) size_ = field->size(id);
  checkField<point>("Positions");
  for (const char* name : {"GPSTime", "Roll", "Pitch", "Yaw"}) checkField<double>(name);
  if (!fault_.empty()) size_ = 0;
}

template <typename T>
void TrajectoryFragment::checkField(const char* name) {
  if (!fault_.empty()) return;
  const auto field = chart_.field(name);
  if (!field) return setNoData(fmt::format("{}: missing", name));
  const auto nothing = field->values<T>(id_, 0, 0);  // refused for another type, an absent chunk
  if (!nothing) return setNoData(nothing.error);
  if (const auto size = field->size(id_); size != size_) {
    setNoData(fmt::format("{}: {} values, Positions has {}", name, size, size_));
  }
}

template <typename T>
TrajectoryFragment::Column<T> TrajectoryFragment::read(const char* name, Rows rows) {
  if (!fault_.empty()) return nullptr;
  const auto read = chart_.field(name)->template values<T>(id_, rows.first, rows.count);
  if (!read) {
    setNoData(read.error);
    return nullptr;
  }
  const auto& values = *read.values;
  const auto bad =
      std::find_if(values.begin(), values.end(), [](const T& v) { return !isFinite(v); });
  if (bad == values.end()) return read.values;
  fault_ = fmt::format(
      "Trajectory::importTrajectory: {} of record {} in fragment {} is not finite: {}, in file {}",
      name, rows.first + static_cast<std::size_t>(bad - values.begin()), id_.number, textOf(*bad),
      file_.string());
  return nullptr;
}

TrajectoryFragment::Column<point> TrajectoryFragment::positions(Rows rows) {
  return read<point>("Positions", rows);
}
TrajectoryFragment::Column<double> TrajectoryFragment::times(Rows rows) {
  return read<double>("GPSTime", rows);
}
TrajectoryFragment::Column<double> TrajectoryFragment::roll(Rows rows) {
  return read<double>("Roll", rows);
}
TrajectoryFragment::Column<double> TrajectoryFragment::pitch(Rows rows) {
  return read<double>("Pitch", rows);
}
TrajectoryFragment::Column<double> TrajectoryFragment::yaw(Rows rows) {
  return read<double>("Yaw", rows);
}

void TrajectoryFragment::setNoData(const std::string& detail) {
  Morvane::Console::writeLine(fmt::format("Trajectory::importTrajectory: {}: fragment {}: {}",
                                          file_.string(), id_.number, detail));
  fault_ = "Trajectory::importTrajectory: have no data for the current fragment";
}

}  // namespace Velorn
