// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <new>
#include <system_error>

#include <fmt/format.h>

#include "adjustment/trajectory/Growth.h"
#include "adjustment/trajectory/TimeIndex.h"
#include "adjustment/trajectory/TrajectoryFragment.h"
#include "platform/geomra/Degree.h"
#include "platform/morvane/Console.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/Trajectory.h>

namespace Velorn {
namespace {

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point;
using Projection = Tessaly::TransverseMercatorProjectionParameter;

constexpr std::uint32_t noCode = 0xFFFFFFFF;
constexpr double noLength = -9999.0;
constexpr std::size_t rowsAtOnce = 1 << 18;  // some megabytes per column

bool isNorthernUtm(std::uint32_t epsg) {
  const bool wgs84 = epsg >= 32601 && epsg <= 32660;
  const bool etrs89 = epsg >= 25828 && epsg <= 25837;
  return wgs84 || etrs89;
}

std::uint32_t codeOf(const Strandel::Chart& chart, const char* name) {
  return chart.attributes().unsigned32(name).value_or(noCode);
}

point pointOf(const Strandel::Chart& chart, const char* name) {
  return chart.attributes().point(name).value_or(point{noLength, noLength, noLength});
}

}  // namespace

// NOLINTNEXTLINE(modernize-pass-by-value): the interface takes a reference
Trajectory::Trajectory(const std::vector<fs::path>& paths) : files(paths) {}

bool Trajectory::week_number_exists(const unsigned int& week) const {
  return weeks.contains(week);
}

std::map<unsigned int, TimeRange> Trajectory::timeRanges() const {
  std::map<unsigned int, TimeRange> ranges;
  for (const auto& [week, index] : weeks) {
    ranges[week] = {index->first().time, index->last().time};
  }
  return ranges;
}

std::string Trajectory::importTrajectory() {
  clear();
  try {
    message = readFiles();
  } catch (const std::bad_alloc&) {
    message = fmt::format("Trajectory::importTrajectory: not enough memory after {} records",
                          positions.size());
  }
  // Of weeks with bad fragments only.
  std::erase_if(weeks, [](const auto& week) { return week.second->size() == 0; });
  for (const auto& [week, index] : weeks) index->build();
  return message;
}

void Trajectory::clear() {
  *this = Trajectory(files);
}

std::string Trajectory::readFiles() {
  for (const auto& file : files) {
    std::error_code unknown;  // a path whose status cannot be determined counts as absent
    if (!fs::exists(file, unknown))
      return "importTrajectory: Error, File not found - " + file.string();
    if (auto fault = readFile(file); !fault.empty()) return fault;
  }
  return {};
}

std::string Trajectory::readFile(const fs::path& file) {
  Strandel::Bundle bundle;
  if (const auto fault = Strandel::MyStorage(0, 0, 0, 1).load(file, bundle); !fault.empty()) {
    Morvane::Console::writeLine(fault);
    return "Trajectory::importTrajectory: have no bundle";
  }
  std::string lastFault;
  for (const auto& slice : bundle.slices()) {
    const auto fault = readSlice(*slice, file);
    if (fault.empty()) continue;
    Morvane::Console::writeLine(
        fmt::format("{} - slice at {} of {}", fault, slice->time(), file.string()));
    lastFault = fault;
  }
  return lastFault;
}

std::string Trajectory::readSlice(const Strandel::Slice& slice, const fs::path& file) {
  const auto grid = slice.uniqueGrid();
  if (!grid) {
    return fmt::format(
        "Trajectory::importTrajectory: a slice must have one grid, that at {} has {}, in file {}",
        slice.time(), slice.numberOfGrids(), file.string());
  }
  const auto chart = grid->cartesian();
  if (!chart) return "scannerToWorldCoordinatesReborn: Have no wrold_chart";
  if (auto fault = readProjection(*chart, file); !fault.empty()) return fault;
  const auto week = codeOf(*chart, "WeekNumber");
  if (epsgHeight == noCode || week == noCode) {
    return "Trajectory::importTrajectory: epsg for height/spatial or weeknumber not available!";
  }
  if (auto fault = readMounting(*chart, file); !fault.empty()) return fault;
  return readFragments(*chart, week, file);
}

std::string Trajectory::readProjection(const Strandel::Chart& chart, const fs::path& file) {
  const auto before = epsgSpatial;
  epsgHeight = codeOf(chart, "EPSG_HEIGHT");
  epsgSpatial = codeOf(chart, "EPSG_SPATIAL");
  if (!isNorthernUtm(epsgSpatial)) {
    return fmt::format("Invalid EPSG code {}! Is not UTM with ellipsoid WGS84 or ETRS89.",
                       epsgSpatial);
  }
  mercator = Projection::UTMfromEPSG(epsgSpatial);
  if (!positions.empty() && epsgSpatial != before) {
    Morvane::Console::writeLine(
        fmt::format("Warning: Trajectory::importTrajectory: EPSG_SPATIAL changes from {} to {} in "
                    "file {}; the last one is taken for all positions",
                    before, epsgSpatial, file.string()));
  }
  return {};
}

std::string Trajectory::readMounting(const Strandel::Chart& chart, const fs::path& file) {
  leverArm = pointOf(chart, "LeverArm");
  misalignment = pointOf(chart, "Misalignment");
  if (leverArm.x == noLength || misalignment.x == noLength) {
    return "Trajectory::importTrajectory: Leverarm or Misalignment not available!";
  }
  if (!isFinite(leverArm) || !isFinite(misalignment)) {
    return "Trajectory::importTrajectory: Leverarm or Misalignment not finite, in file " +
           file.string();
  }
  return {};
}

std::string Trajectory::readFragments(const Strandel::Chart& chart, std::uint32_t week,
                                      const fs::path& file) {
  const auto field = chart.field("Positions");
  if (!field) return "Trajectory::importTrajectory: no Positions!";
  for (const auto id : field->fragments()) {
    TrajectoryFragment fragment(chart, id, file);
    appendFragment(fragment, week);
    if (!fragment.fault().empty()) return fragment.fault();
  }
  return {};
}

/// All records or, after a fault, none.
void Trajectory::appendFragment(TrajectoryFragment& fragment, std::uint32_t week) {
  const std::size_t size = fragment.size(), before = positions.size();
  if (size == 0) return;  // makes no week
  growFor(positions, size);
  growFor(attitudes, size);
  if (!weeks.contains(week)) weeks.emplace(week, std::make_shared<TimeIndex>());
  TimeIndex& index = *weeks.at(week);
  index.growFor(size);
  for (std::size_t row = 0; row < size && fragment.fault().empty(); row += rowsAtOnce) {
    appendRows(fragment, row, std::min(rowsAtOnce, size - row), index);
  }
  if (fragment.fault().empty()) return;
  positions.resize(before);
  attitudes.resize(before);
  index.dropFrom(before);
}

/// Each column is let go before the next is read, so that all of them take the same memory. The
/// index comes last: it never holds a record that is not there.
void Trajectory::appendRows(TrajectoryFragment& fragment, std::size_t row, std::size_t count,
                            TimeIndex& index) {
  const std::uint64_t record = positions.size();
  const TrajectoryFragment::Rows rows{row, count};
  if (const auto read = fragment.positions(rows)) {
    positions.insert(positions.end(), read->begin(), read->end());
  }
  appendAngles(fragment.roll(rows), fragment.pitch(rows), fragment.yaw(rows));
  if (const auto read = fragment.times(rows)) index.append(*read, record);
}

/// @param roll, pitch, yaw  [degree]; nothing happens when one is empty
void Trajectory::appendAngles(const Angles& roll, const Angles& pitch, const Angles& yaw) {
  if (!roll || !pitch || !yaw) return;
  for (std::size_t j = 0; j < roll->size(); ++j) {
    attitudes.push_back(
        {(*roll)[j] * Geomra::degree, (*pitch)[j] * Geomra::degree, (*yaw)[j] * Geomra::degree});
  }
}

}  // namespace Velorn
