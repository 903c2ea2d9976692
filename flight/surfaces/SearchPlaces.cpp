// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/SearchPlaces.h"

#include <algorithm>
#include <limits>
#include <optional>

#include <fmt/format.h>

#include "flight/surfaces/CellTable.h"
#include "platform/morvane/Console.h"
#include <velorn/Georeferencing.h>
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
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

/// Which times the georeferencing has a place for; for others it would answer with a message about
/// all points, one of its own per point on the console, and a place far off.
class Coverage {
 public:
  Coverage(const Solution& solution, std::uint32_t strip, std::uint32_t week,
           bool interpolationFlag)
      : parameters_(solution.parameters), strip_(strip), interpolationFlag_(interpolationFlag) {
    const auto ranges = solution.trajectory.timeRanges();
    const auto range = ranges.find(week);
    if (range != ranges.end()) first_ = range->second.first;
  }

  bool hasPose(double time) const { return first_ && (!interpolationFlag_ || time > *first_); }
  bool hasSection(double time) const { return parameters_.findSection(strip_, time).has_value(); }

 private:
  const Velorn::SolverParameters& parameters_;
  std::uint32_t strip_;
  bool interpolationFlag_;
  std::optional<double> first_;
};

void keepCovered(const Solution& solution, const std::filesystem::path& file, std::uint32_t strip,
                 bool interpolationFlag, MatchPoints& points) {
  const Coverage coverage(solution, strip, points.week, interpolationFlag);
  keepThose(file, "the trajectory does not hold their time and week", points,
            [&](std::size_t k) { return coverage.hasPose(points.times[k]); });
  keepThose(file, "their time lies in no section of the strip", points,
            [&](std::size_t k) { return coverage.hasSection(points.times[k]); });
}

std::vector<point> rotatedBy(const Disturbance& disturbance, const std::vector<point>& scanner) {
  std::vector<point> rotated;
  rotated.reserve(scanner.size());
  for (const point& place : scanner) rotated.push_back(disturbance.rotated(place));
  return rotated;
}

/// The columns of the points that have a place.
struct Covered {
  std::vector<std::size_t> numbers;
  std::vector<point> scanner;
  std::vector<double> times;
};

Covered coveredOf(const Coverage& coverage, const MeasuredPoints& points) {
  Covered covered;
  for (std::size_t k = 0; k < points.times.size(); ++k) {
    const double time = points.times[k];
    if (!coverage.hasPose(time) || !coverage.hasSection(time)) continue;
    if (!isOnEarth(points.scanner[k])) continue;
    covered.numbers.push_back(k);
    covered.scanner.push_back(points.scanner[k]);
    covered.times.push_back(time);
  }
  return covered;
}

}  // namespace

void searchWith(const Solution* solution, const std::filesystem::path& file, std::uint32_t strip,
                bool interpolationFlag, MatchPoints& points) {
  if (!solution) return;
  keepCovered(*solution, file, strip, interpolationFlag, points);
  if (points.size() == 0) return;
  points.searched.resize(points.size());
  std::vector<vector> directions(points.size());
  const auto* const disturbance = solution->disturbance;
  const std::string message = Velorn::scanner2world(
      solution->parameters, solution->trajectory,
      disturbance ? rotatedBy(*disturbance, points.scanner) : points.scanner, points.times,
      points.week, strip, points.searched, directions, 0.0, interpolationFlag);
  if (disturbance) {
    for (point& place : points.searched) place = place + disturbance->shifts.at(strip);
  }
  const auto dropped = keepThose(file, "they have no place by the last result", points,
                                 [&](std::size_t k) { return isOnEarth(points.searched[k]); });
  if (!message.empty() && dropped == 0) {
    throw Error(fmt::format("{}: {}", file.string(), message));
  }
}

std::vector<point> placesBy(const Solution& solution, const std::filesystem::path& file,
                            std::uint32_t strip, bool interpolationFlag,
                            const MeasuredPoints& points) {
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  std::vector<point> places(points.times.size(), {none, none, none});
  const Coverage coverage(solution, strip, points.week, interpolationFlag);
  const Covered covered = coveredOf(coverage, points);
  if (covered.numbers.empty()) return places;
  std::vector<point> found(covered.numbers.size());
  std::vector<vector> directions(covered.numbers.size());
  const std::string message = Velorn::scanner2world(
      solution.parameters, solution.trajectory, covered.scanner, covered.times, points.week, strip,
      found, directions, 0.0, interpolationFlag);
  const bool areAllFound = std::ranges::all_of(found, isOnEarth);
  if (!message.empty() && areAllFound) throw Error(file.string() + ": " + message);
  for (std::size_t k = 0; k < found.size(); ++k) places[covered.numbers[k]] = found[k];
  return places;
}

}  // namespace Velorn::Flights
