// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether trajectory and model were recorded when the strips were measured.
#include <algorithm>
#include <cmath>
#include <optional>

#include <fmt/format.h>

#include "flight/chain/StripsGeoreferencing.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/TimeCover.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

struct Measured {
  std::uint32_t week = 0;
  TimeSpan span;
};

/// Only the structure and the stored range of the times are read where there is one. Nothing for a
/// strip that is damaged or has no times: georeferencing it tells what it lacks.
std::optional<Measured> measuredIn(const fs::path& strip) {
  Strandel::Bundle bundle;
  if (!Strandel::MyStorage(0, 0, 0, 1).load(strip, bundle).empty()) return {};
  for (const auto& grid : bundle.grids()) {
    const auto week = grid->attributes().unsigned32("WeekNumber");
    for (const auto* name : {Strandel::scannerChartName, Strandel::worldChartName}) {
      const auto chart = grid->chart(name);
      const auto field = chart ? chart->field("GPSTime") : nullptr;
      if (!week || !field) continue;
      const auto read = field->range();
      if (!read.error.empty() || !read.range) return {};
      return Measured{*week, {read.range->lowest(), read.range->highest()}};
    }
  }
  return {};
}

void checkTrajectory(const fs::path& strip, const Measured& measured,
                     const Velorn::Trajectory& trajectory) {
  const auto ranges = trajectory.timeRanges();
  const auto week = ranges.find(measured.week);
  const auto refused = [&](const std::string& recorded) {
    return Error(fmt::format("{}: measured from {}, but the trajectory {}", strip.string(),
                             timesText(measured.span, measured.week), recorded));
  };
  if (week == ranges.end()) throw refused("has no record of that week");
  const TimeSpan recorded{week->second.first, week->second.last};
  // A time that is the first record's is told by the library, where that is asked for.
  if (measured.span.first >= recorded.first && measured.span.last <= recorded.last) return;
  throw refused(fmt::format("is from {}{}", timesText(recorded, measured.week),
                            likelyCause(recorded, measured.span)));
}

/// A section file has the starts of sections, not the end of a strip: the strip is to begin with
/// its sections, or later by less than its own duration.
void checkSections(const fs::path& strip, const Measured& measured,
                   const std::map<double, Velorn::Section>& sections) {
  constexpr double rounding = 1e-6, shortest = 10.0;
  const double begin = sections.begin()->first;
  const auto& span = measured.span;
  const double duration =
      std::max(shortest, sections.rbegin()->first - begin + std::abs(span.last - span.first));
  if (span.first >= begin - rounding && span.first <= begin + duration) return;
  throw Error(fmt::format(
      "{}: measured from {}, but its sections in the model begin at {:.3f} s: the model of another "
      "flight, with strips of the same names?",
      strip.string(), timesText(span, measured.week), begin));
}

}  // namespace

void checkTimes(const GeoreferencingInput& input, const Velorn::Trajectory& trajectory,
                const Velorn::SolverParameters& parameters, const std::vector<fs::path>& unknown) {
  for (const std::size_t place : placesOf(input)) {
    const auto& strip = input.strips[place];
    const auto measured = measuredIn(strip);
    if (!measured || !std::isfinite(measured->span.first)) continue;
    checkTrajectory(strip, *measured, trajectory);
    const bool isKnown = std::ranges::find(unknown, strip) == unknown.end();
    if (input.model.sections.empty() || !isKnown) continue;
    checkSections(strip, *measured, parameters.getStripSections().at(place).sections);
  }
}

}  // namespace Velorn::Flights
