// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the benchmarks of files have in common: their settings, from the environment, and the names
// of their files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <unistd.h>

inline std::string setting(const char* name, const std::string& otherwise) {
  const char* const value = std::getenv(name);
  return value ? value : otherwise;
}

/// A file of this process in the folder VELORN_BENCH_FOLDER, or the system's temporary folder.
inline std::filesystem::path benchmarkFile(const std::string& name) {
  const std::filesystem::path folder =
      setting("VELORN_BENCH_FOLDER", std::filesystem::temp_directory_path().string());
  return folder / ("velorn-bench-" + std::to_string(getpid()) + "-" + name);
}

inline void orThrow(const std::string& fault) {
  if (!fault.empty()) throw std::runtime_error(fault);
}
