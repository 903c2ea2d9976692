// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a caller is told while an operation goes on, and how it ends one.
//
//     Velorn::Flights::Watch watch;
//     watch.message = [](const std::string& line) { myLog(line); };
//     watch.isCancelled = [&] { return stopButton.isPressed(); };
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace Velorn::Flights {

/// All are called on the thread that called the operation, never from within a parallel loop. Any
/// may be empty.
struct Watch {
  /// How far the work is: what is being counted, items begun before this one, and items in all (0
  /// when unknown).
  std::function<void(const std::string& what, std::size_t current, std::size_t total)> progress;
  /// A line that people should see: what a step found, repairs, guesses, warnings.
  std::function<void(const std::string& line)> message;
  /// Asked between two pieces of work and after each step of the solver. Once it is true, the
  /// operation ends with Error::Interrupted; whole files stay, half files are removed.
  std::function<bool()> isCancelled;
};

}  // namespace Velorn::Flights
