// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Whether the trajectory has a position for every point of the correspondences: one point without
// would end the whole solve.
#pragma once

#include <filesystem>
#include <string>

#include <velorn/InputParameter.h>
#include <velorn/Trajectory.h>

namespace Velorn::Flights {

/// Looks at all correspondence files of the configuration's folder. A file that cannot be loaded is
/// passed over; the check of the adjustment tells of it.
/// @return empty, or one line per file: how many of its times the trajectory does not cover
std::string timesOutsideTrajectory(const Velorn::InputParameter& configuration,
                                   const Velorn::Trajectory& trajectory);

}  // namespace Velorn::Flights
