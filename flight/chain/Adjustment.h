// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One adjustment, for the rounds of a run and for itself.
#pragma once

#include <memory>

#include "flight/strips/Watcher.h"
#include <velorn/flight/Adjust.h>

namespace Velorn::Flights {

/// Refuses what would fail later: files that are missing, names that the list of files cannot hold,
/// two strips of one name, correspondences of a matching that was cut off.
/// @throws Error that names the file
void check(const AdjustmentInput& input);

/// @throws as adjust
AdjustmentReport adjustedBy(const AdjustmentInput& input, const std::shared_ptr<Watcher>& watcher);

}  // namespace Velorn::Flights
