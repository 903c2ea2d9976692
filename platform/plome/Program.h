// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Runs another program and waits for its end, but not for ever.
//
//     const auto end = Plome::runProgram({.command = {"gnuplot"}, .input = script, .output =
//     page}); if (!end.fault.empty()) return end.fault + ": " + end.said;
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Visibility.h"

namespace Plome {

struct ProgramCall {
  std::vector<std::string> command{};  ///< program name, looked up in PATH, and its arguments
  std::string_view input{};            ///< all that its standard input holds
  std::filesystem::path output{};      ///< new file for its standard output; empty: thrown away
  std::optional<std::chrono::milliseconds> timeLimit{};
  /// Called time and again on the calling thread; what it throws ends the program and is passed on.
  std::function<void()> whileRunning{};
};

/// How a program ended.
struct ProgramEnd {
  std::string
      fault;         ///< empty for status 0, otherwise "<program> ended with status 1" and the like
  std::string said;  ///< its standard error, the first few kilobytes, on one line
};

/// Runs a program and returns when it has ended. There is no shell, and no pipe that a program
/// which does not read could break or block: its standard input is a file in memory, only its
/// standard error is a pipe, read to the end however much comes. Further files that this process
/// has open are closed in it. It sees this process's environment, except that its locale is
/// C.UTF-8. What the output file holds after a failure was written until then. At the time limit,
/// and when `whileRunning` throws or `removeUnfinishedFiles` is called, the program and all that it
/// started are killed.
VELORN_PLATFORM_EXPORT ProgramEnd runProgram(const ProgramCall& call);

}  // namespace Plome
