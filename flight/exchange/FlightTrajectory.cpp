// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/FlightTrajectory.h"

#include <cmath>

#include <fmt/format.h>

#include "flight/exchange/GpsTimes.h"
#include "flight/formats/PoseOrder.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

constexpr double overlap = 2.0;  // beyond the end of a week [s]

/// @return the week of the file's first record, when the file says it
std::optional<std::int64_t> append(const std::filesystem::path& file,
                                   const TextTrajectoryFormat& format,
                                   std::vector<SbetRecord>& records,
                                   const std::function<void(const std::string&)>& tell) {
  if (looksLikeSbet(file)) {
    readSbet(
        file, [&](const SbetRecord& record) { records.push_back(record); }, TimeOrder::Any);
    return {};
  }
  const auto text = readTextTrajectory(file, format);
  if (text.attitudeMayBeRadians) {
    tell(file.string() +
         ": no angle of the attitude is beyond 6.3 degrees; if they are radians, say "
         "--attitude-unit radians");
  }
  records.insert(records.end(), text.records.begin(), text.records.end());
  return text.week;
}

void tellOrder(const OrderReport& report, const std::function<void(const std::string&)>& tell) {
  const auto line = [&](const Findings& findings, const char* what) {
    if (findings.count == 0) return;
    tell(fmt::format("trajectory: {} records {} (first at {:.3f} s)", findings.count, what,
                     findings.firstTime));
  };
  line(report.outOfOrder, "out of order of time, put in order");
  line(report.dropped, "with a time that was there already, left out");
  line(report.otherPose, "of these with another pose");
}

/// The records of one week and some about it, in its seconds.
std::vector<SbetRecord> recordsOfWeek(const std::vector<SbetRecord>& records, double begin) {
  std::vector<SbetRecord> some;
  for (SbetRecord record : records) {
    record.time -= begin;
    if (record.time >= -overlap && record.time < weekSeconds + overlap) some.push_back(record);
  }
  return some;
}

}  // namespace

FlightTrajectory readTrajectory(const TrajectorySource& source, unsigned epsg,
                                const std::function<void(const std::string&)>& tell) {
  std::vector<SbetRecord> records;
  std::optional<std::int64_t> week;
  auto format = source.text;
  format.epsg = epsg;
  for (const auto& file : source.files) {
    const auto its = append(file, format, records, tell);
    if (!its) continue;
    if (week && *week != *its) {
      throw Error(
          fmt::format("{}: begins in GPS week {}, another trajectory file in {}; give "
                      "both in one file",
                      file.string(), *its, *week));
    }
    week = its;
  }
  auto ordered = inTimeOrder(std::move(records));
  tellOrder(ordered.report, tell);
  return {std::move(ordered.records), week};
}

std::vector<std::filesystem::path> saveTrajectories(
    const FlightTrajectory& trajectory, std::int64_t week, unsigned epsg,
    const Geomra::PhysicalSpace::point& leverArm, const Geomra::PhysicalSpace::point& misalignment,
    const std::filesystem::path& folder) {
  const auto weekOf = [](const SbetRecord& record) {
    return static_cast<std::int64_t>(std::floor(record.time / weekSeconds));
  };
  const auto first = weekOf(trajectory.records.front()), last = weekOf(trajectory.records.back());
  std::vector<std::filesystem::path> files;
  for (std::int64_t number = first; number <= last; ++number) {
    const auto records =
        recordsOfWeek(trajectory.records, static_cast<double>(number) * weekSeconds);
    const std::int64_t its = week + number;
    TrajectoryColumns columns = trajectoryColumns(records, epsg);
    columns.week = its;
    columns.epsgSpatial = epsg;
    columns.epsgHeight = ellipsoidalHeightCode(epsg);
    columns.leverArm = leverArm;
    columns.misalignment = misalignment;
    files.push_back(folder /
                    (first == last ? "trajectory.kx" : fmt::format("trajectory_{}.kx", its)));
    saveTrajectory(files.back(), std::move(columns));
  }
  return files;
}

}  // namespace Velorn::Flights
