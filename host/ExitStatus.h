// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Exit statuses of the program beside 0, all is well. docs/commands.md tells users.
#pragma once

#include <velorn/flight/Error.h>

enum ExitStatus {
  jobFailed = 1,             ///< bad input, or a fault that has no status of its own
  misuse = 2,                ///< the call is not understood
  noConvergence = 3,         ///< the solver ran out of steps
  tooLittleGroundTruth = 4,  ///< fewer correspondences with it than are needed
  solverFailure = 5,         ///< the solver ended in another way than by converging
  writeError = 6,            ///< a file or folder that cannot be written
  interrupted = 130          ///< as a shell says it of SIGINT
};

inline ExitStatus exitStatusOf(Velorn::Flights::Error::Kind kind) {
  using Velorn::Flights::Error;
  switch (kind) {
    case Error::BadSettings:
      return misuse;
    case Error::NoSpace:
      return writeError;
    case Error::Interrupted:
      return interrupted;
    case Error::NoConvergence:
      return noConvergence;
    case Error::TooLittleControl:
      return tooLittleGroundTruth;
    case Error::SolverFailed:
      return solverFailure;
    case Error::BadInput:
    case Error::MissingFile:
    case Error::Internal:
      break;
  }
  return jobFailed;
}
