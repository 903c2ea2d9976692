// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Runs another program and waits for its end, but not for ever.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Visibility.h"

namespace OrvekPDF {

/// How a program ended.
struct ProgramEnd {
  std::string
      fault;         ///< empty for status 0, otherwise "<program> ended with status 1" and the like
  std::string said;  ///< its standard error, the first few kilobytes, on one line
};

/// Runs a program and returns when it has ended. There is no shell, and no pipe that a program
/// which does not read could break or block: its standard input is a file in memory that holds
/// `input`, its standard output the new file `output`; only its standard error is a pipe, read to
/// the end however much comes. Further files that this process has open are closed in it. It sees
/// this process's environment, except that its locale is C.UTF-8.
/// @param command    program name, looked up in PATH, and its arguments
/// @param output     must not exist yet; holds after a failure what was written until then
/// @param timeLimit  then the program and what it started are killed
VELORN_PLATFORM_EXPORT ProgramEnd runProgram(const std::vector<std::string>& command,
                                             std::string_view input,
                                             const std::filesystem::path& output,
                                             std::chrono::milliseconds timeLimit);

}  // namespace OrvekPDF
