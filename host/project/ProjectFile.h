// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Project files: settings as keys of a TOML file.
#pragma once

#include <filesystem>
#include <set>
#include <string>

#include <velorn/flight/Settings.h>

/// Reads a project file; one of version 0.1, whose words had no quotes, as well. Relative paths
/// count from the file's folder.
/// @param given  names of settings that were given as flags and keep the flag's value
/// @throws Error naming the file, the line and the key, which is unknown or has a value that it
///         cannot have
void readProject(const std::filesystem::path& file, const std::set<std::string>& given,
                 Velorn::Flights::FlightSettings& settings);

/// A project file with every key: those that were given with their values, the others as comments
/// with their defaults.
/// @param file  that it is written to: paths are given as seen from its folder
/// @throws Error for a value that is no UTF-8
std::string projectText(const std::filesystem::path& file, const std::set<std::string>& given,
                        const Velorn::Flights::FlightSettings& settings);
