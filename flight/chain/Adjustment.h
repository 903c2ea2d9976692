// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One adjustment, for the rounds of a run and for itself.
#pragma once

#include <memory>

#include "flight/strips/Watcher.h"
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>
#include <velorn/flight/Adjust.h>

namespace Velorn::Flights {

/// Refuses what would fail later: files that are missing, names that the list of files cannot hold,
/// two strips of one name, correspondences of a matching that was cut off.
/// @throws Error that names the file
void check(const AdjustmentInput& input);

struct Adjusted {
  AdjustmentReport report;
  std::shared_ptr<const Velorn::SolverParameters> parameters;
};

/// @param trajectory    imported, of the input's files
/// @param areOwnBlocks  of strips that the trajectory was seen to cover; else all times of the
///                      correspondences are looked at first
/// @throws as adjust
Adjusted adjustedBy(const AdjustmentInput& input, const Velorn::Trajectory& trajectory,
                    const std::shared_ptr<Watcher>& watcher, bool areOwnBlocks);

}  // namespace Velorn::Flights
