// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which settings the outputs of a step depend on, by the table of settings.
#pragma once

#include "flight/records/StepKey.h"
#include <velorn/flight/SettingsTable.h>

namespace Velorn::Flights {

/// Adds the values of all settings that name the step. Files are left out: they count by their
/// stamps, see `StepKey::addFiles`.
void addSettings(const FlightSettings& settings, Step step, StepKey& key);

}  // namespace Velorn::Flights
