// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The settings of what is known of a flight before.
#pragma once

#include <vector>

#include <velorn/flight/SettingsTable.h>

namespace Velorn::Flights {

std::vector<Setting> knowledgeSettings();

}  // namespace Velorn::Flights
