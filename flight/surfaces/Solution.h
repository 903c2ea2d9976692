// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The result of a round, which the next one begins from.
#pragma once

#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>

namespace Velorn::Flights {

/// A result that a search is to start from; both outlive the call.
struct Solution {
  const Velorn::SolverParameters& parameters;
  const Velorn::Trajectory& trajectory;
};

}  // namespace Velorn::Flights
