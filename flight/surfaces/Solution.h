// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The result of a round, which the next one begins from.
#pragma once

#include <array>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>

namespace Velorn::Flights {

/// By how much a search is to begin beside a solution.
struct Disturbance {
  /// Of the mounting: small rotations about the body's axes (forward, right, down) [rad].
  std::array<double, 3> rotation{};
  std::vector<Geomra::PhysicalSpace::vector> shifts;  ///< of the strips [m]

  /// @param scanner  (down, forward, right) [m]
  Geomra::PhysicalSpace::point rotated(const Geomra::PhysicalSpace::point& scanner) const {
    const auto& [roll, pitch, yaw] = rotation;
    const double down = scanner.x, forward = scanner.y, right = scanner.z;
    return {down + roll * right - pitch * forward, forward + pitch * down - yaw * right,
            right + yaw * forward - roll * down};
  }
};

/// A result that a search is to start from; all of it outlives the call.
struct Solution {
  const Velorn::SolverParameters& parameters;
  const Velorn::Trajectory& trajectory;
  const Disturbance* disturbance = nullptr;  ///< null: none
};

}  // namespace Velorn::Flights
