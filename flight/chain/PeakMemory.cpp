// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/PeakMemory.h"

#include <sys/resource.h>

namespace Velorn::Flights {

std::uint64_t peakMemory() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}

}  // namespace Velorn::Flights
