// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/run/Memory.h"

#include <fstream>
#include <limits>
#include <string>

#include <sys/resource.h>

std::optional<std::uint64_t> availableMemory() {
  std::ifstream file("/proc/meminfo");
  std::string word;
  while (file >> word) {
    std::uint64_t kibibytes = 0;
    if (word == "MemAvailable:" && file >> kibibytes) return kibibytes * 1024;
    file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
  }
  return {};
}

std::uint64_t peakMemory() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}
