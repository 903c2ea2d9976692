// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The trajectory as it really was: 200 records per second, and the straight lines between them.
#pragma once

#include <cstddef>
#include <vector>

#include "flight/simulation/FlightPlan.h"
#include "flight/simulation/Motion.h"
#include "flight/simulation/SensorChain.h"

namespace Velorn::Flights::Simulation {

/// Poses at equal distances of time, linear between two records, angles as plain numbers.
class Track {
 public:
  static constexpr double rate = 200.0;  ///< records per second

  void add(double time, const Pose& pose);

  std::size_t size() const { return times_.size(); }
  double time(std::size_t record) const { return times_[record]; }
  const Pose& pose(std::size_t record) const { return poses_[record]; }

  /// @param time  between the first and the last record [s of week]
  Pose at(double time) const;

 private:
  std::vector<double> times_;
  std::vector<Pose> poses_;
};

/// The planned flight with motion, wind and banked turns. The nose points into the wind, so that
/// the ground is crossed along the plan; the yaw counts from true north and goes on beyond ±180°.
Track flownTrack(const FlightPlan& plan, const Motion& motion, const Projection& projection);

}  // namespace Velorn::Flights::Simulation
