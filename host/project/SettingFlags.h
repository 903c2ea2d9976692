// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The flags of the settings, made from their table.
#pragma once

#include <functional>
#include <set>
#include <string>

#include <velorn/flight/SettingsTable.h>

namespace CLI {
class App;
}

/// Adds the settings that are wanted as flags to a command. The command refers to the settings,
/// which must outlive it.
void addFlags(CLI::App& command, Velorn::Flights::FlightSettings& settings,
              const std::function<bool(const Velorn::Flights::Setting&)>& isWanted);

/// Adds the flags of what is estimated to a command that takes no project.
void addModelFlags(CLI::App& command, Velorn::Flights::FlightSettings& settings);

/// The names of the settings that were given as flags.
std::set<std::string> givenFlags(const CLI::App& command);
