// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/PoseIntervals.h"

#include <limits>
#include <stdexcept>

#include "adjustment/georef/PhysicalSpace.h"
#include <velorn/Trajectory.h>

namespace Velorn {

std::optional<std::uint32_t> PoseIntervals::add(double time, std::uint32_t week) {
  const auto records = trajectory_.recordsAbout(time, week);
  if (!records) {
    const auto fixed = beyondRecords(time, week);
    if (!fixed) return {};
    return append(*fixed);
  }
  const auto& [a, b] = *records;
  const auto [entry, isNew] =
      known_.try_emplace({a.time, week}, static_cast<std::uint32_t>(intervals_.size()));
  if (isNew) {
    append({a.time,
            1.0 / (b.time - a.time),
            {vectorOf(a.position), vectorOf(a.attitude)},
            {vectorOf(b.position) - vectorOf(a.position),
             vectorOf(b.attitude) - vectorOf(a.attitude)}});
  }
  return entry->second;
}

std::optional<PoseInterval> PoseIntervals::beyondRecords(double time, std::uint32_t week) const {
  Geomra::PhysicalSpace::point position;
  Geomra::PhysicalSpace::vector attitude;
  if (!trajectory_.interpolateTrajectory(time, week, position, attitude, isReporting_)) return {};
  const Vector3<double> none = Vector3<double>::Zero();
  return PoseInterval{time, 0.0, {vectorOf(position), vectorOf(attitude)}, {none, none}};
}

std::uint32_t PoseIntervals::append(const PoseInterval& interval) {
  if (intervals_.size() == std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("PoseIntervals: more than 4294967295 intervals of the trajectory");
  }
  intervals_.push_back(interval);
  return static_cast<std::uint32_t>(intervals_.size() - 1);
}

}  // namespace Velorn
