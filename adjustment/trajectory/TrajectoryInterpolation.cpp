// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "adjustment/trajectory/TimeIndex.h"
#include "platform/morvane/Console.h"
#include <velorn/Trajectory.h>

namespace Velorn {
namespace {

using Morvane::Console;

constexpr std::size_t fewestTimes = 3;

/// A + f (B − A); B itself for f = 1, which the rounded sum may miss.
double between(double a, double b, double f) {
  return f == 1.0 ? b : a + f * (b - a);
}

}  // namespace

/// @return empty after a message
const TimeIndex* Trajectory::searchable(std::uint32_t week) const {
  const auto found = weeks.find(week);
  if (found == weeks.end()) {
    Console::writeLine(fmt::format(
        " Trajectory::interpolateTrajectory: Error, found no week number {} in trajectory", week));
    return nullptr;
  }
  if (found->second->size() < fewestTimes) {
    Console::writeLine(
        fmt::format(" Trajectory::interpolateTrajectory: Error, number of time stamps for "
                    "weeknumber {} is zero!",
                    week));
    return nullptr;
  }
  return found->second.get();
}

bool Trajectory::interpolateTrajectory(const double& t, const unsigned int& week,
                                       Geomra::PhysicalSpace::point& position,
                                       Geomra::PhysicalSpace::vector& attitude,
                                       const bool& report) const {
  const TimeIndex* const index = searchable(week);
  if (!index) return false;
  if (!(t > -std::numeric_limits<double>::infinity())) {
    Console::writeLine(fmt::format(
        " Trajectory::interpolateTrajectory: Error, time ({}) with weeknumber ({}) is no time", t,
        week));
    return false;
  }
  const auto set = [&](const TimeIndex::Entry& a, const TimeIndex::Entry& b, double f) {
    const auto &p = positions[a.record], &q = positions[b.record];
    position = {between(p.x, q.x, f), between(p.y, q.y, f), between(p.z, q.z, f)};
    const auto &u = attitudes[a.record], &v = attitudes[b.record];
    attitude = {between(u[0], v[0], f), between(u[1], v[1], f), between(u[2], v[2], f)};
  };
  const std::size_t place = index->lowerBound(t);
  if (place == index->size()) {
    set(index->last(), index->last(), 1.0);
    return true;
  }
  const bool tooEarly = place == 0 && report;
  if (tooEarly) {
    Console::writeLine(
        fmt::format("Trajectory::interpolateTrajectory, Error, time ({}) with weeknumber ({}) > is "
                    "lower min-range of trajectory ({})",
                    t, week, index->last().time));
  }
  const std::size_t second = std::max<std::size_t>(place, 1);
  const auto &a = (*index)[second - 1], &b = (*index)[second];
  set(a, b, (t - a.time) / (b.time - a.time));
  return !tooEarly;
}

std::optional<std::pair<TrajectoryRecord, TrajectoryRecord>> Trajectory::recordsAbout(
    const double& t, const unsigned int& week) const {
  const auto found = weeks.find(week);
  if (found == weeks.end() || found->second->size() < fewestTimes) return {};
  const TimeIndex& index = *found->second;
  const std::size_t place = index.lowerBound(t);
  if (place == 0 || place == index.size()) return {};
  const auto at = [&](const TimeIndex::Entry& entry) {
    const auto& a = attitudes[entry.record];
    return TrajectoryRecord{entry.time, positions[entry.record], {a[0], a[1], a[2]}};
  };
  return std::pair(at(index[place - 1]), at(index[place]));
}

}  // namespace Velorn
