// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How good trajectories of certain instruments are, for flights that come without a file on it.
#pragma once

#include <array>
#include <string_view>

namespace Velorn {

/// A priori standard deviations of a trajectory's errors.
struct InstrumentClass {
  std::string_view name;
  std::array<double, 3> position;  ///< east, north, height [m]
  std::array<double, 3> attitude;  ///< roll, pitch, yaw [degree]
};

inline constexpr std::array<InstrumentClass, 3> instrumentClasses{{
    {"survey", {0.03, 0.03, 0.05}, {0.004, 0.004, 0.008}},
    {"drone", {0.04, 0.04, 0.08}, {0.02, 0.02, 0.1}},
    {"unknown", {0.10, 0.10, 0.15}, {0.05, 0.05, 0.15}},
}};

}  // namespace Velorn
