// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How a command of the program gives up.
#pragma once

#include <stdexcept>
#include <string>

/// Exit statuses of the program beside 0, all is well. docs/commands.md tells users.
/// @{
constexpr int jobFailed = 1;             ///< bad input, or a fault that has no status of its own
constexpr int misuse = 2;                ///< the call is not understood
constexpr int noConvergence = 3;         ///< the solver ran out of steps
constexpr int tooLittleGroundTruth = 4;  ///< fewer correspondences with it than are needed
constexpr int solverFailure = 5;         ///< the solver ended in another way than by converging
constexpr int writeError = 6;            ///< a file or folder that cannot be written
/// @}

/// A job that cannot go on. The message names the file or the value and says what to do; main shows
/// it and ends with the exit status.
class Failure : public std::runtime_error {
 public:
  explicit Failure(const std::string& message, int exitStatus = jobFailed)
      : std::runtime_error(message), exitStatus_(exitStatus) {}
  int exitStatus() const { return exitStatus_; }

 private:
  int exitStatus_;
};

/// Turns a message of the library into a failure.
/// @throws Failure unless the text is empty
inline void orFail(const std::string& fault, int exitStatus = jobFailed) {
  if (!fault.empty()) throw Failure(fault, exitStatus);
}
