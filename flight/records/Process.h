// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which process of which machine: the number of a process is given again after its end, the time
// of its start is not.
#pragma once

#include <string>

namespace Velorn::Flights {

struct Process {
  std::string host;
  long long number = 0;
  std::string start;  ///< in ticks since the machine started; empty for a process that is gone

  static Process ours();
  bool isHere() const;
  /// Of another machine nobody knows.
  bool isGone() const;
};

}  // namespace Velorn::Flights
