// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The aircraft's path: where it was, and how it lay in the air, at a GPS time.
//
//     Velorn::Trajectory trajectory(files.getTrajectories());
//     if (const std::string fault = trajectory.importTrajectory(); !fault.empty()) return fault;
//     trajectory.interpolateTrajectory(t, week, position, attitude, true);
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include "platform/tessaly/TransverseMercator.h"
#include <velorn/Visibility.h>

namespace Strandel {
class Chart;
class Slice;
}  // namespace Strandel

namespace Velorn {

class TimeIndex;
class TrajectoryFragment;

/// First and last time stamp of a week [s of week].
struct TimeRange {
  double first = 0.0;
  double last = 0.0;
  friend bool operator==(const TimeRange&, const TimeRange&) = default;
};

/// The trajectory at one of its time stamps.
struct TrajectoryRecord {
  double time = 0.0;                       ///< [s of week]
  Geomra::PhysicalSpace::point position;   ///< projected, with height [m]
  Geomra::PhysicalSpace::vector attitude;  ///< roll, pitch, yaw [rad]
};

/// Positions and attitudes by GPS week and time, read from trajectory containers, with what was
/// recorded beside them. Once imported it is only read, by any number of threads. A copy is
/// independent of its original.
class VELORN_EXPORT Trajectory {
 public:
  /// Keeps the paths; reads nothing.
  explicit Trajectory(const std::vector<std::filesystem::path>& files);

  /// Reads all files, some records at a time. Their records may come in any order of time and in
  /// any number of files; of two records of one week with equal times the one read later holds.
  /// Called again it starts anew.
  /// @return empty, or one message; throws nothing. A fault in a slice leaves out the rest of that
  ///         slice; the other slices of the file are read, then the import ends. What was read
  ///         stays. The console is told the place of every fault.
  std::string importTrajectory();

  /// True when records of that GPS week were read.
  bool week_number_exists(const unsigned int& week) const;

  /// Of the last slice read, zero before.
  /// @{
  Geomra::PhysicalSpace::point getLeverarm() const { return leverArm; }  ///< body frame [m]
  /// About the body's axes [degree], as stored.
  Geomra::PhysicalSpace::point getMisalignment() const { return misalignment; }
  /// The projection of the positions.
  Tessaly::TransverseMercatorProjectionParameter getMercator() const { return mercator; }
  std::uint32_t getEpsgSpatial() const { return epsgSpatial; }
  std::uint32_t getEpsgHeight() const { return epsgHeight; }
  /// @}

  /// Records read, also those whose time came again later.
  std::size_t numberOfRecords() const { return positions.size(); }

  /// The time range of every week that was read, by week number.
  std::map<unsigned int, TimeRange> timeRanges() const;

  /// Position and attitude at a GPS time, linear between two records; angles as plain numbers,
  /// without wrapping: X = A + f (B − A), f = (t − tA) / (tB − tA). At a time stamp it is that
  /// record exactly. Before the first time stamp the line through the first two records goes on,
  /// after the last one the last record holds.
  /// @param t         [s of week]
  /// @param week      GPS week number
  /// @param position  projected, with height [m]
  /// @param attitude  roll, pitch, yaw [rad]
  /// @param report    tells the console of a time before the first time stamp or on it, and answers
  ///                  false; position and attitude are set all the same
  /// @return true, or false after a message on the console; position and attitude are untouched
  ///         when the week is not there or has fewer than three time stamps, and for a time that is
  ///         NaN or minus infinity
  bool interpolateTrajectory(const double& t, const unsigned int& week,
                             Geomra::PhysicalSpace::point& position,
                             Geomra::PhysicalSpace::vector& attitude, const bool& report) const;

  /// The two records between which interpolateTrajectory follows a line, for a caller with many
  /// times between them: the first is before t, the second at t or after it. Empty, without a
  /// message, for a time on the first time stamp or before it, after the last one, or NaN, and for
  /// a week that is not there or has fewer than three time stamps.
  std::optional<std::pair<TrajectoryRecord, TrajectoryRecord>> recordsAbout(
      const double& t, const unsigned int& week) const;

 private:
  using Angles = std::shared_ptr<const std::vector<double>>;

  void clear();
  std::string readFiles();
  std::string readFile(const std::filesystem::path& file);
  std::string readSlice(const Strandel::Slice& slice, const std::filesystem::path& file);
  std::string readProjection(const Strandel::Chart& chart, const std::filesystem::path& file);
  std::string readMounting(const Strandel::Chart& chart, const std::filesystem::path& file);
  std::string readFragments(const Strandel::Chart& chart, std::uint32_t week,
                            const std::filesystem::path& file);
  void appendFragment(TrajectoryFragment& fragment, std::uint32_t week);
  void appendRows(TrajectoryFragment& fragment, std::size_t row, std::size_t count,
                  TimeIndex& index);
  void appendAngles(const Angles& roll, const Angles& pitch, const Angles& yaw);
  const TimeIndex* searchable(std::uint32_t week) const;

  // Time stamps to places in positions and attitudes, by week. Shared only by copies, and an import
  // makes new ones.
  std::unordered_map<std::uint32_t, std::shared_ptr<TimeIndex>> weeks;
  std::vector<std::filesystem::path> files;
  std::vector<Geomra::PhysicalSpace::point> positions;  // in the order read
  std::vector<std::array<double, 3>> attitudes;         // roll, pitch, yaw [rad]
  std::string message;                                  // of the last import; empty: all is well
  Tessaly::TransverseMercatorProjectionParameter mercator;
  std::uint32_t epsgHeight = 0;
  std::uint32_t epsgSpatial = 0;
  Geomra::PhysicalSpace::point leverArm;
  Geomra::PhysicalSpace::point misalignment;
};

}  // namespace Velorn
