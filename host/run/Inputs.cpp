// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/run/Inputs.h"

#include <cmath>
#include <initializer_list>

#include <fmt/format.h>

#include "host/Failure.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"

namespace {

namespace fs = std::filesystem;

constexpr double weekSeconds = 604800.0;

Strandel::GridPtr gridOf(const fs::path& file, Strandel::Bundle& bundle) {
  orFail(Strandel::MyStorage(0, 0, 0, 1).load(file, bundle));
  const auto grids = bundle.grids();
  if (grids.size() == 1) return grids.front();
  throw Failure(fmt::format("{}: holds {} grids, one is needed", file.string(), grids.size()));
}

Strandel::ValueRange rangeOf(const fs::path& file, const Strandel::ChartPtr& chart,
                             const char* name) {
  const auto field = chart ? chart->field(name) : nullptr;
  if (!field) throw Failure(fmt::format("{}: has no field {}", file.string(), name));
  const auto read = field->range();
  orFail(read.error);
  if (!read.range) throw Failure(fmt::format("{}: holds no points", file.string()));
  return *read.range;
}

void requireFields(const fs::path& file, const Strandel::ChartPtr& chart,
                   std::initializer_list<const char*> names) {
  for (const char* const name : names) {
    if (chart && chart->field(name)) continue;
    throw Failure(fmt::format("{}: has no field {}", file.string(), name));
  }
}

std::string timesText(double first, double last, std::int64_t week) {
  return fmt::format("{:.3f} to {:.3f} s of week {}", first, last, week);
}

/// What usually lies behind times that do not fit.
std::string causeOf(const StripFacts& strip, const Velorn::TimeRange& range) {
  const auto fits = [&](double shift) {
    return strip.first + shift > range.first && strip.last + shift <= range.last;
  };
  for (const double leap : {18.0, -18.0}) {
    if (fits(leap)) return "; 18 s of leap seconds would make them fit (UTC instead of GPS time?)";
  }
  if (strip.first > weekSeconds) return "; seconds of the week end at 604800";
  return {};
}

void checkTimes(const StripFacts& strip, const Velorn::Trajectory& trajectory) {
  const auto ranges = trajectory.timeRanges();
  const auto week = ranges.find(static_cast<unsigned int>(strip.week));
  const std::string own = fmt::format("{}: measured from {}", strip.file.string(),
                                      timesText(strip.first, strip.last, strip.week));
  if (week == ranges.end()) {
    std::string weeks;
    for (const auto& [number, range] : ranges) weeks += fmt::format(" {}", number);
    throw Failure(fmt::format("{}, but the trajectory has only the GPS weeks{}", own, weeks));
  }
  const auto& range = week->second;
  if (strip.first > range.first && strip.last <= range.last) return;
  throw Failure(fmt::format("{}, but the trajectory is from {}{}", own,
                            timesText(range.first, range.last, strip.week), causeOf(strip, range)));
}

std::string placeText(const Box& box) {
  return fmt::format("E {:.0f} to {:.0f}, N {:.0f} to {:.0f}", box.low[0], box.high[0], box.low[1],
                     box.high[1]);
}

}  // namespace

bool Box::isNear(const Box& other, double reach) const {
  for (std::size_t i = 0; i < 2; ++i) {
    if (low[i] > other.high[i] + reach || other.low[i] > high[i] + reach) return false;
  }
  return true;
}

bool Box::isFinite() const {
  for (std::size_t i = 0; i < 3; ++i) {
    if (!std::isfinite(low[i]) || !std::isfinite(high[i])) return false;
  }
  return true;
}

StripFacts factsOf(const fs::path& strip) {
  Strandel::Bundle bundle;
  const auto grid = gridOf(strip, bundle);
  const auto world = grid->cartesian();
  const auto positions = rangeOf(strip, world, "Positions");
  const auto times = rangeOf(strip, world, "GPSTime");
  requireFields(strip, world, {"ReturnNumber", "NumberOfReturns", "Classification", "Amplitude"});
  requireFields(strip, grid->chart(Strandel::scannerChartName),
                {"Positions", "Waveforms.DirectionDelta"});
  const auto week = grid->attributes().integer("WeekNumber");
  if (!week) {
    throw Failure(fmt::format("{}: has no grid attribute WeekNumber, the GPS week of its times",
                              strip.string()));
  }
  if (!std::isfinite(times.lowest()) || !std::isfinite(times.highest())) {
    throw Failure(fmt::format("{}: a GPS time is no number", strip.string()));
  }
  return {strip,           world->field("Positions")->size(),     *week, times.lowest(),
          times.highest(), {positions.minimum, positions.maximum}};
}

std::optional<Box> boxOfGroundTruth(const fs::path& groundTruth) {
  Strandel::Bundle bundle;
  const auto chart = gridOf(groundTruth, bundle)->cartesian();
  requireFields(groundTruth, chart, {"Positions", "NormalVector"});
  const auto read = chart->field("Positions")->range();
  orFail(read.error);
  if (!read.range) return {};
  return Box{read.range->minimum, read.range->maximum};
}

void checkTogether(const std::vector<StripFacts>& strips, const Velorn::Trajectory& trajectory,
                   const Project& project) {
  for (const auto& strip : strips) checkTimes(strip, trajectory);
  if (project.groundTruth.empty()) return;
  const auto box = boxOfGroundTruth(project.groundTruth);
  if (!box || !box->isFinite()) return;
  for (const auto& strip : strips) {
    if (!strip.box.isFinite() || strip.box.isNear(*box, project.configuration().SearchRadius)) {
      return;
    }
  }
  throw Failure(fmt::format(
      "{}: lies at {}, and no strip does ({}: {}): another zone, or easting and northing swapped?",
      project.groundTruth, placeText(*box), strips.front().file.string(),
      placeText(strips.front().box)));
}
