// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Puts the records of a trajectory in the order of their times and finds its gaps. Writers that
// join files deliver overlaps; nothing of that is a reason to refuse a flight, but a user hears of
// it.
#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "flight/formats/Sbet.h"

namespace Velorn::Flights {

/// How often something was found, and where first.
struct Findings {
  std::size_t count = 0;
  double firstTime = std::numeric_limits<double>::quiet_NaN();  ///< [s of week]; NaN for none
};

/// What was out of order in a trajectory.
struct OrderReport {
  Findings outOfOrder;  ///< records that stood behind one of a later time
  Findings dropped;     ///< records whose time an earlier one in the file has
  Findings otherPose;   ///< those of the dropped ones whose pose differed from the one that stayed
};

/// Records whose times ascend.
struct OrderedPoses {
  std::vector<SbetRecord> records;
  OrderReport report;
};

/// Sorts records by time; of those with one time the first of the file stays.
/// @throws std::invalid_argument for a time that is NaN
OrderedPoses inTimeOrder(std::vector<SbetRecord> records);

/// A stretch without a record [s of week].
struct TimeGap {
  double from = 0.0;  ///< the last time before
  double to = 0.0;    ///< the first time behind
};

/// The gaps that are longer than a limit [s].
/// @param records  in the order of time
/// @throws std::invalid_argument for a limit that is negative or NaN
std::vector<TimeGap> gapsLongerThan(double limit, const std::vector<SbetRecord>& records);

}  // namespace Velorn::Flights
