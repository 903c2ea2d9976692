// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The one table of what a user can set: flags, project files, checks, the keys of the steps and the
// page of the manual are made from it.
//
//     for (const auto& setting : settingsTable()) {
//       std::cout << setting.name << " = " << valueText(setting, settings) << '\n';
//     }
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <velorn/flight/Settings.h>

namespace Velorn::Flights {

/// The steps of a run, in their order.
enum class Step { Rasterize, Match, Adjust, Georeference };

/// Where a setting can be given.
enum class SettingUse {
  Project,  ///< as a key of a project file, and as a flag
  Flag,     ///< as a flag alone
  Code      ///< by hosts of the library
};

/// Where the value of a setting lies, by its type.
using SettingPlace = std::variant<bool*, int*, unsigned int*, std::uint64_t*, double*, std::string*,
                                  std::filesystem::path*, std::vector<int>*, std::vector<double>*,
                                  std::vector<std::string>*, std::map<int, double>*>;

struct Setting {
  const char* name = "";      ///< of the key; the flag has two dashes before it
  const char* group = "";     ///< title that it stands under
  const char* sentence = "";  ///< what it is
  const char* unit = "";      ///< in the plural; empty: none
  double low = 0.0;           ///< least and largest number, or entry of a list of numbers
  double high = std::numeric_limits<double>::max();
  bool followsPoints = false;  ///< zero, too, is a value: what suits the points
  std::vector<std::string>
      words{};                   ///< the only values of a text, or of a list's entries; empty: any
  std::size_t entries = 0;       ///< that a list must have; 0: any number
  const char* placeholder = "";  ///< stands for the value where a flag is explained
  const char* example = "";      ///< in TOML, where the default tells nothing
  char delimiter = ',';          ///< between entries of a list in one word; 0: they are words
  bool isPath = false;           ///< relative ones of a project file count from its folder
  SettingUse use = SettingUse::Project;
  /// Whose work it changes. When it does, a run does these steps again, and with them those that
  /// build on their results.
  std::vector<Step> steps{};
  SettingPlace (*place)(FlightSettings&) = nullptr;
};

/// In the order of the groups.
VELORN_FLIGHT_EXPORT const std::vector<Setting>& settingsTable();

/// @return null for a name that no setting has
VELORN_FLIGHT_EXPORT const Setting* findSetting(std::string_view name);

/// The value as a flag takes it: numbers in the shortest form that reads back to the same value,
/// lists with their delimiter.
VELORN_FLIGHT_EXPORT std::string valueText(const Setting& setting, const FlightSettings& settings);

/// @return empty, or "7 is not a number from 0 to 5"; NaN never lies within
VELORN_FLIGHT_EXPORT std::string boundsFault(const Setting& setting, double value);

/// What is wrong with a value by itself: bounds, words, number of entries.
/// @return empty when nothing is
VELORN_FLIGHT_EXPORT std::string valueFault(const Setting& setting, const FlightSettings& settings);

/// @throws Error of BadSettings that names the first setting with such a fault
VELORN_FLIGHT_EXPORT void checkValues(const FlightSettings& settings);

VELORN_FLIGHT_EXPORT const char* nameOf(Step step);

}  // namespace Velorn::Flights
