// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/CorrectedTrajectory.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>

#include <fmt/format.h>

#include "flight/strips/AdjustedName.h"
#include "flight/strips/GpsWeek.h"
#include "flight/strips/GridFile.h"
#include "flight/strips/OrFail.h"
#include "platform/tessaly/TransverseMercator.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;
using Velorn::Trajectory, Velorn::TrajectoryRecord;

double secondsBefore(std::int64_t week, std::int64_t firstWeek) {
  return static_cast<double>(week - firstWeek) * weekSeconds;
}

std::optional<unsigned> placeOf(const fs::path& container, const AdjustedModel& model) {
  for (const auto& name :
       {container.filename().string(), strippedStem(container) + container.extension().string()}) {
    const auto found = std::find(model.strips.begin(), model.strips.end(), name);
    if (found != model.strips.end()) return static_cast<unsigned>(found - model.strips.begin());
  }
  return {};
}

TimeSpan spanOf(const GridFile& strip) {
  strip.world<double>("GPSTime");
  const auto read = strip.worldField("GPSTime")->range();
  orFail(read.error);
  if (!read.range) strip.refuse("", "holds no points");
  const TimeSpan span{read.range->lowest(), read.range->highest()};
  if (!std::isfinite(span.first) || !std::isfinite(span.last)) {
    strip.refuse("GPSTime", "a GPS time is no number");
  }
  return span;
}

/// Appends the records of a week, in order of time.
/// @param first  its first time
/// @param kept   of the others; weeks beside each other overlap
/// @param shift  is added to the times
void appendWeek(const Trajectory& trajectory, unsigned week, double first, const TimeSpan& kept,
                double shift, std::vector<TrajectoryRecord>& records) {
  const auto append = [&](TrajectoryRecord record) {
    if (record.time < kept.first || record.time >= kept.last) return;
    record.time += shift;
    records.push_back(record);
  };
  const auto after = [&](double time) {
    const double next = std::nextafter(time, std::numeric_limits<double>::infinity());
    return trajectory.recordsAbout(next, week);
  };
  auto pair = after(first);
  if (!pair) {
    throw Error(fmt::format("trajectory: has fewer than three records of GPS week {}", week));
  }
  append(pair->first);
  for (; pair; pair = after(pair->second.time)) append(pair->second);
}

/// All records, in seconds of the first week.
std::vector<TrajectoryRecord> recordsOf(const Trajectory& trajectory,
                                        const std::map<unsigned, Velorn::TimeRange>& weeks) {
  constexpr double infinite = std::numeric_limits<double>::infinity();
  std::vector<TrajectoryRecord> records;
  records.reserve(trajectory.numberOfRecords());
  const unsigned firstWeek = weeks.begin()->first, lastWeek = weeks.rbegin()->first;
  if (lastWeek - firstWeek + 1 != weeks.size()) {
    throw Error(
        fmt::format("trajectory: its GPS weeks, {} to {}, do not follow each other; "
                    "export them one by one",
                    firstWeek, lastWeek));
  }
  for (const auto& [week, range] : weeks) {
    const TimeSpan kept{week == firstWeek ? -infinite : 0.0,
                        week == lastWeek ? infinite : weekSeconds};
    appendWeek(trajectory, week, range.first, kept, secondsBefore(week, firstWeek), records);
  }
  return records;
}

/// Which strip corrects each record.
class Owners {
 public:
  Owners(const std::vector<TrajectoryRecord>& records, std::int64_t week)
      : records_(records), week_(week), owners_(records.size()) {}

  /// The records within a strip.
  void own(const MeasuredStrip& strip) {
    const auto [begin, end] = placesWithin(strip);
    for (std::size_t k = begin; k < end; ++k) {
      if (owners_[k]) ++contested_;
      if (!owners_[k]) owners_[k] = &strip;
    }
  }
  /// The records before and behind a strip, where they are within no other one.
  void ownEnds(const MeasuredStrip& strip) {
    const auto [begin, end] = placesWithin(strip);
    if (begin > 0 && !owners_[begin - 1]) owners_[begin - 1] = &strip;
    if (end < owners_.size() && !owners_[end]) owners_[end] = &strip;
  }
  void check(const MeasuredStrip& strip) const {
    const TimeSpan span = spanInFirstWeek(strip);
    const TimeSpan recorded{records_.front().time, records_.back().time};
    if (covers(recorded, span)) return;
    throw Error(fmt::format("{}: measured from {}, but the trajectory is from {}{}",
                            strip.container.string(), timesText(span, week_),
                            timesText(recorded, week_), likelyCause(recorded, span)));
  }

  const MeasuredStrip* of(std::size_t record) const { return owners_[record]; }
  std::size_t contested() const { return contested_; }

 private:
  TimeSpan spanInFirstWeek(const MeasuredStrip& strip) const {
    const double shift = secondsBefore(strip.week, week_);
    return {strip.span.first + shift, strip.span.last + shift};
  }
  std::pair<std::size_t, std::size_t> placesWithin(const MeasuredStrip& strip) const {
    const TimeSpan span = spanInFirstWeek(strip);
    const auto begin = std::ranges::lower_bound(records_, span.first, {}, &TrajectoryRecord::time);
    const auto end = std::ranges::upper_bound(records_, span.last, {}, &TrajectoryRecord::time);
    return {static_cast<std::size_t>(begin - records_.begin()),
            static_cast<std::size_t>(end - records_.begin())};
  }

  const std::vector<TrajectoryRecord>& records_;
  std::int64_t week_;
  std::vector<const MeasuredStrip*> owners_;
  std::size_t contested_ = 0;
};

Owners ownersOf(const std::vector<TrajectoryRecord>& records, std::int64_t week,
                const std::vector<MeasuredStrip>& strips) {
  Owners owners(records, week);
  for (const auto& strip : strips) owners.check(strip);
  for (const auto& strip : strips) owners.own(strip);
  for (const auto& strip : strips) owners.ownEnds(strip);
  return owners;
}

/// Of a strip that was locked, and of no strip.
bool isNone(const PoseCorrection& correction) {
  return correction.position == PoseCorrection{}.position &&
         correction.attitude == PoseCorrection{}.attitude;
}

SbetRecord geographic(const TrajectoryRecord& record, const PoseCorrection& correction,
                      const Tessaly::TransverseMercatorProjectionParameter& zone) {
  const auto place = Tessaly::inverseTransverseMercatorProjection(
      record.position + correction.position, zone, false);
  const auto& [roll, pitch, yaw] = record.attitude;
  const auto& added = correction.attitude;
  return {record.time, place.y, place.x, place.z, roll + added.x, pitch + added.y, yaw + added.z};
}

}  // namespace

std::vector<MeasuredStrip> measuredStrips(const std::vector<fs::path>& containers,
                                          const AdjustedModel& model,
                                          std::vector<fs::path>& unknown) {
  std::vector<MeasuredStrip> strips;
  std::map<unsigned, fs::path> known;
  for (const auto& container : containers) {
    const auto place = placeOf(container, model);
    if (!place) {
      unknown.push_back(container);
      continue;
    }
    const auto [same, isNew] = known.emplace(*place, container);
    if (!isNew) {
      throw Error(fmt::format("{} and {}: both are the strip {} of the adjustment",
                              same->second.string(), container.string(), model.strips[*place]));
    }
    const GridFile file(container);
    strips.push_back({container, *place, file.week(), spanOf(file)});
  }
  return strips;
}

CorrectedTrajectory correctedTrajectory(const Trajectory& trajectory,
                                        const Velorn::SolverParameters& parameters,
                                        const std::vector<MeasuredStrip>& strips) {
  const auto weeks = trajectory.timeRanges();
  if (weeks.empty()) throw Error("trajectory: holds no records");
  CorrectedTrajectory result;
  result.week = weeks.begin()->first;
  const auto records = recordsOf(trajectory, weeks);
  const Owners owners = ownersOf(records, result.week, strips);
  result.contested = owners.contested();
  result.records.reserve(records.size());
  for (std::size_t k = 0; k < records.size(); ++k) {
    const MeasuredStrip* const strip = owners.of(k);
    const auto correction =
        strip ? correctionAt(parameters, strip->place, strip->span,
                             records[k].time - secondsBefore(strip->week, result.week))
              : PoseCorrection{};
    result.corrected += isNone(correction) ? 0 : 1;
    result.records.push_back(geographic(records[k], correction, trajectory.getMercator()));
  }
  return result;
}

}  // namespace Velorn::Flights
