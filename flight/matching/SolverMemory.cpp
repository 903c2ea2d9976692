// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/SolverMemory.h"

#include <fstream>
#include <limits>
#include <string>

namespace Velorn::Flights {

std::size_t availableMemory() {
  std::ifstream file("/proc/meminfo");
  std::string word;
  while (file >> word) {
    std::size_t kibibytes = 0;
    if (word == "MemAvailable:" && file >> kibibytes) return kibibytes * 1024;
    file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return 0;
}

}  // namespace Velorn::Flights
