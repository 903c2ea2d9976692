// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The intervals of a trajectory that measurements lie in, in a table.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "adjustment/georef/TrajectoryCorrection.h"

namespace Velorn {

class Trajectory;

/// A line through two records of a trajectory: X(t) = A + (t − tA) / (tB − tA) (B − A).
struct PoseInterval {
  double start;      ///< tA [s of week]
  double perSecond;  ///< 1 / (tB − tA)
  Pose<double> pose, change;

  Pose<double> at(double time) const {
    const double f = (time - start) * perSecond;
    return {pose.position + f * change.position, pose.attitude + f * change.attitude};
  }
};

class PoseIntervals {
 public:
  /// @param isReporting  as Trajectory::interpolateTrajectory
  PoseIntervals(const Trajectory& trajectory, bool isReporting)
      : trajectory_(trajectory), isReporting_(isReporting) {}

  /// Number of the interval that a time lies in; what lies before the first time stamp or after the
  /// last gets an interval of its own, which holds what the trajectory answers.
  /// @return nothing, after a message on the console, where the trajectory has no pose
  std::optional<std::uint32_t> add(double time, std::uint32_t week);

  /// Forgets what only add needs.
  void close() { known_ = {}; }

  const PoseInterval& operator[](std::uint32_t number) const { return intervals_[number]; }

 private:
  struct Key {
    double start;
    std::uint32_t week;
    friend bool operator==(const Key&, const Key&) = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const {
      return std::hash<double>()(key.start) ^ (std::size_t{key.week} << 1U);
    }
  };

  std::optional<PoseInterval> beyondRecords(double time, std::uint32_t week) const;
  std::uint32_t append(const PoseInterval& interval);

  const Trajectory& trajectory_;
  bool isReporting_;
  std::vector<PoseInterval> intervals_;
  std::unordered_map<Key, std::uint32_t, KeyHash> known_;
};

}  // namespace Velorn
