// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/StepSettings.h"

#include <algorithm>

namespace Velorn::Flights {

void addSettings(const FlightSettings& settings, Step step, StepKey& key) {
  for (const auto& setting : settingsTable()) {
    if (setting.isPath || std::ranges::count(setting.steps, step) == 0) continue;
    key.add(setting.name, valueText(setting, settings));
  }
}

}  // namespace Velorn::Flights
