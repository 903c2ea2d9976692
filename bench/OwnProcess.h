// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Measures work in a process of its own.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <stdexcept>

#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

struct Usage {
  std::size_t peak = 0;  ///< largest resident size [bytes]
  double own = 0.0;      ///< processor time of all threads in the program [s]
  double system = 0.0;   ///< and in the kernel, for it [s]
  double elapsed = 0.0;  ///< [s]
};

/// @throws std::runtime_error when the work throws; its message goes to standard error
inline Usage usageOf(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot start a process");
  if (child == 0) {
    try {
      work();
      _exit(0);
    } catch (const std::exception& error) {
      fmt::print(stderr, "{}\n", error.what());
      _exit(1);
    }
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0) {
    throw std::runtime_error("the process failed");
  }
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  return {static_cast<std::size_t>(usage.ru_maxrss) * 1024, seconds(usage.ru_utime),
          seconds(usage.ru_stime), elapsed.count()};
}
