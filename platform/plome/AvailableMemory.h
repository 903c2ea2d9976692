// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How much memory this process may still take.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/Visibility.h"

namespace Plome {

/// What the system says of memory; the parts are functions and numbers so that any system can be
/// thought of.
struct MemoryFacts {
  /// Text of a file of /proc or /sys/fs/cgroup; empty where there is none.
  std::function<std::string(const std::string& file)> read;
  std::uint64_t page = 4096;                  ///< [byte]
  std::uint64_t freePages = 0;                ///< as sysconf says; 0: it does not
  std::uint64_t kept = 0;                     ///< freed, and kept by the process [byte]
  std::optional<std::uint64_t> addressLimit;  ///< RLIMIT_AS [byte]; none: unlimited
};

/// The least of what the system has (MemAvailable, or its free pages where /proc/meminfo does not
/// say), of what is left to each control group of version 1 or 2 that the process is in, and of
/// what is left of its address space [byte]; and what the process keeps beside. Memory of files
/// that a group's kernel would give up counts as left.
/// @return nothing when nothing is known
VELORN_PLATFORM_EXPORT std::optional<std::uint64_t> availableMemory(const MemoryFacts& facts);

/// Of this process, now.
VELORN_PLATFORM_EXPORT std::optional<std::uint64_t> availableMemory();

}  // namespace Plome
