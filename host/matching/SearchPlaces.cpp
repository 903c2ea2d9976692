// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/matching/SearchPlaces.h"

#include <fmt/format.h>

#include "host/Failure.h"
#include "platform/morvane/Console.h"
#include <velorn/Georeferencing.h>

namespace Matching {
namespace {

/// Calls keep(k) for all points, and tells the console of those that it answers false for.
template <typename Keep>
std::size_t keepThose(const std::filesystem::path& file, const char* why, MatchPoints& points,
                      const Keep& keep) {
  std::vector<std::uint32_t> numbers;
  for (std::size_t k = 0; k < points.size(); ++k) {
    if (keep(k)) numbers.push_back(static_cast<std::uint32_t>(k));
  }
  const std::size_t dropped = points.size() - numbers.size();
  if (dropped == 0) return 0;
  Morvane::Console::writeLine(fmt::format("match: {}: {} of {} points are left out: {}",
                                          file.string(), dropped, points.size(), why));
  points.keep(numbers);
  return dropped;
}

/// Takes out what the georeferencing would answer for with a message about all points, one of its
/// own per point on the console, and a place far off.
void keepCovered(const Solution& solution, const std::filesystem::path& file, std::uint32_t strip,
                 bool interpolationFlag, MatchPoints& points) {
  const auto ranges = solution.trajectory.timeRanges();
  const auto range = ranges.find(points.week);
  keepThose(file, "the trajectory does not hold their time and week", points, [&](std::size_t k) {
    return range != ranges.end() && (!interpolationFlag || points.times[k] > range->second.first);
  });
  keepThose(file, "their time lies in no section of the strip", points, [&](std::size_t k) {
    return solution.parameters.findSection(strip, points.times[k]).has_value();
  });
}

}  // namespace

void searchWith(const Solution* solution, const std::filesystem::path& file, std::uint32_t strip,
                bool interpolationFlag, MatchPoints& points) {
  if (!solution) return;
  keepCovered(*solution, file, strip, interpolationFlag, points);
  if (points.size() == 0) return;
  points.searched.resize(points.size());
  std::vector<vector> directions(points.size());
  const std::string message = Velorn::scanner2world(
      solution->parameters, solution->trajectory, points.scanner, points.times, points.week, strip,
      points.searched, directions, 0.0, interpolationFlag);
  const auto dropped = keepThose(file, "they have no place by the last result", points,
                                 [&](std::size_t k) { return isOnEarth(points.searched[k]); });
  if (!message.empty() && dropped == 0) {
    throw Failure(fmt::format("{}: {}", file.string(), message));
  }
}

}  // namespace Matching
