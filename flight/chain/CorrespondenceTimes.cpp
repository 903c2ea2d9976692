// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/CorrespondenceTimes.h"

#include <algorithm>
#include <map>

#include <fmt/format.h>

#include <velorn/CorrespondenceBlock.h>

namespace Velorn::Flights {

namespace {

using Ranges = std::map<unsigned int, Velorn::TimeRange>;

/// Times without a position: before the first record, and on it when the interpolation is strict.
std::size_t uncovered(const Velorn::SphericalBeingData& side, const Ranges& ranges, bool isStrict) {
  const auto range = ranges.find(side.weekNumber);
  if (range == ranges.end()) return side.times->size();
  const double first = range->second.first;
  return static_cast<std::size_t>(std::count_if(
      side.times->begin(), side.times->end(), [&](double t) { return isStrict && !(t > first); }));
}

}  // namespace

std::string timesOutsideTrajectory(const Velorn::InputParameter& configuration,
                                   const Velorn::Trajectory& trajectory) {
  const auto ranges = trajectory.timeRanges();
  std::string faults;
  for (const auto& entry : std::filesystem::directory_iterator(
           configuration.RootPath / configuration.getCorrespondencePath())) {
    if (!entry.is_regular_file() || entry.path().extension() != ".kx") continue;
    const Velorn::CorrespondenceBlock block(entry.path(), configuration.Storage);
    if (!block.errorText().empty()) continue;
    std::size_t count = uncovered(block.sideI(), ranges, configuration.InterpolationFlag);
    if (!block.isGroundTruth()) {
      count += uncovered(block.sideJ(), ranges, configuration.InterpolationFlag);
    }
    if (count == 0) continue;
    faults += fmt::format(
        "{}{}: {} points were measured before the trajectory begins, or in a week "
        "that it does not have",
        faults.empty() ? "" : "\n", entry.path().string(), count);
  }
  return faults;
}

}  // namespace Velorn::Flights
