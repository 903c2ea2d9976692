// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the table tells of the values of settings.
#include <algorithm>
#include <type_traits>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <velorn/flight/Error.h>
#include <velorn/flight/SettingsTable.h>

namespace Velorn::Flights {
namespace {

/// Reads where the table leads to.
template <typename Read>
auto valueIn(const Setting& setting, const FlightSettings& settings, const Read& read) {
  // The table leads to places that can be written; nothing is written here.
  auto& all = const_cast<FlightSettings&>(settings);
  return std::visit([&](const auto* value) { return read(*value); }, setting.place(all));
}

std::string text(const std::string& value, char /*delimiter*/) {
  return value;
}

std::string text(const std::filesystem::path& value, char /*delimiter*/) {
  return value.string();
}

std::string text(const std::map<int, double>& value, char delimiter) {
  std::vector<std::string> entries;
  entries.reserve(value.size());
  for (const auto& [strip, length] : value) entries.push_back(fmt::format("{}:{}", strip, length));
  return fmt::format("{}", fmt::join(entries, std::string(1, delimiter)));
}

template <typename T>
std::string text(const std::vector<T>& values, char delimiter) {
  return fmt::format("{}", fmt::join(values, std::string(1, delimiter == '\0' ? ',' : delimiter)));
}

template <typename T>
requires std::is_arithmetic_v<T> std::string text(T value, char /*delimiter*/) {
  return fmt::format("{}", value);
}

std::string fault(const Setting& setting, const std::string& word) {
  const auto& words = setting.words;
  if (words.empty() || std::ranges::find(words, word) != words.end()) return {};
  return fmt::format("{}: not one of {}", word, fmt::join(words, ", "));
}

std::string fault(const Setting& /*setting*/, bool /*value*/) {
  return {};
}

std::string fault(const Setting& /*setting*/, const std::filesystem::path& /*value*/) {
  return {};
}

std::string fault(const Setting& /*setting*/, const std::map<int, double>& /*value*/) {
  return {};
}

template <typename T>
requires(std::is_arithmetic_v<T> && !std::is_same_v<T, bool>) std::string
    fault(const Setting& setting, T value) {
  return boundsFault(setting, static_cast<double>(value));
}

template <typename T>
std::string fault(const Setting& setting, const std::vector<T>& values) {
  if (setting.entries > 0 && values.size() != setting.entries) {
    return fmt::format("has {} entries, one for each of {} classes is needed", values.size(),
                       setting.entries);
  }
  for (const auto& value : values) {
    if (auto found = fault(setting, value); !found.empty()) return found;
  }
  return {};
}

}  // namespace

const Setting* findSetting(std::string_view name) {
  const auto& table = settingsTable();
  const auto found = std::ranges::find(table, name, &Setting::name);
  return found == table.end() ? nullptr : &*found;
}

std::string valueText(const Setting& setting, const FlightSettings& settings) {
  return valueIn(setting, settings,
                 [&](const auto& value) { return text(value, setting.delimiter); });
}

std::string boundsFault(const Setting& setting, double value) {
  if (value >= setting.low && value <= setting.high) return {};
  if (setting.followsPoints && value == 0.0) return {};
  return fmt::format("{} is not a number from {} to {}", value, setting.low, setting.high);
}

std::string valueFault(const Setting& setting, const FlightSettings& settings) {
  return valueIn(setting, settings, [&](const auto& value) { return fault(setting, value); });
}

void checkValues(const FlightSettings& settings) {
  for (const auto& setting : settingsTable()) {
    const auto found = valueFault(setting, settings);
    if (!found.empty()) {
      throw Error(fmt::format("{}: {}", setting.name, found), Error::BadSettings);
    }
  }
}

const char* nameOf(Step step) {
  switch (step) {
    case Step::Rasterize:
      return "rasterize";
    case Step::Match:
      return "match";
    case Step::Adjust:
      return "adjust";
    case Step::Georeference:
      return "georeference";
  }
  return "";
}

}  // namespace Velorn::Flights
