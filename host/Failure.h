// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How a command of the program gives up.
#pragma once

#include <stdexcept>
#include <string>

/// Exit status of a call that the program does not understand; a job that fails ends with 1.
constexpr int misuse = 2;

/// A job that cannot go on. The message names the file or the value and says what to do; main shows
/// it and ends with the exit status.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& message, int exitStatus = 1)
      : std::runtime_error(message), exitStatus_(exitStatus) {}
  int exitStatus() const { return exitStatus_; }

 private:
  int exitStatus_;
};

/// Turns a message of the library into a failure.
/// @throws Failure unless the text is empty
inline void orFail(const std::string& fault) {
  if (!fault.empty()) throw Failure(fault);
}
