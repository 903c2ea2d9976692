// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/project/SettingFlags.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <type_traits>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/project/Bounds.h"

using namespace Velorn::Flights;

namespace {

/// Adds the flag of one setting, by the type of its value.
class FlagAdder {
 public:
  FlagAdder(CLI::App& command, const Setting& setting) : command_(command), setting_(setting) {}

  CLI::Option* operator()(bool* value) const {
    if (!*value) return command_.add_flag(name(), *value, sentence());
    return command_.add_option(name(), *value, sentence())
        ->check(CLI::IsMember({"true", "false", "1", "0"}))
        ->type_name("BOOL");
  }

  template <typename T>
  requires std::is_arithmetic_v<T> CLI::Option* operator()(T* value) const {
    return command_.add_option(name(), *value, sentence())->check(bounds());
  }

  CLI::Option* operator()(std::string* value) const {
    return withWords(command_.add_option(name(), *value, sentence()));
  }

  CLI::Option* operator()(std::filesystem::path* value) const {
    return command_.add_option(name(), *value, sentence());
  }

  CLI::Option* operator()(std::vector<std::string>* values) const {
    return withWords(listOf(*values));
  }

  template <typename T>
  CLI::Option* operator()(std::vector<T>* values) const {
    return listOf(*values)->check(bounds());
  }

  /// Hosts alone set such a value.
  CLI::Option* operator()(std::map<int, double>* /*value*/) const { return nullptr; }

 private:
  std::string name() const { return std::string("--") + setting_.name; }

  /// With the words that the placeholder hides.
  std::string sentence() const {
    const bool hidesWords = !setting_.words.empty() && *setting_.placeholder != '\0';
    if (!hidesWords) return setting_.sentence;
    return fmt::format("{}: {}", setting_.sentence, fmt::join(setting_.words, ", "));
  }

  CLI::Validator bounds() const {
    return within(setting_.low, setting_.high, setting_.followsPoints);
  }

  template <typename T>
  CLI::Option* listOf(std::vector<T>& values) const {
    auto* const option = command_.add_option(name(), values, sentence());
    if (setting_.delimiter != '\0') option->delimiter(setting_.delimiter);
    if (setting_.entries > 0) option->expected(static_cast<int>(setting_.entries));
    return option;
  }

  CLI::Option* withWords(CLI::Option* option) const {
    return setting_.words.empty() ? option : option->check(CLI::IsMember(setting_.words));
  }

  CLI::App& command_;
  const Setting& setting_;
};

/// What stands for the value where the flag is explained; a unit says more than "number".
std::string placeholderOf(const Setting& setting) {
  std::string text = setting.placeholder;
  if (!text.empty()) return text;
  text = setting.unit;
  std::ranges::transform(text, text.begin(),
                         [](unsigned char letter) { return std::toupper(letter); });
  return text;
}

}  // namespace

void addFlags(CLI::App& command, FlightSettings& settings,
              const std::function<bool(const Setting&)>& isWanted) {
  for (const auto& setting : settingsTable()) {
    if (setting.use == SettingUse::Code || !isWanted(setting)) continue;
    auto* const option = std::visit(FlagAdder(command, setting), setting.place(settings));
    option->group(setting.group);
    if (const auto text = placeholderOf(setting); !text.empty()) option->type_name(text);
    const bool isSwitch = option->get_expected_max() == 0;
    if (!isSwitch) option->default_str(valueText(setting, FlightSettings()));
  }
}

void addModelFlags(CLI::App& command, FlightSettings& settings) {
  const std::string adjusting = findSetting("model")->group;
  addFlags(command, settings, [&](const Setting& setting) { return setting.group == adjusting; });
}

std::set<std::string> givenFlags(const CLI::App& command) {
  std::set<std::string> given;
  for (const auto& setting : settingsTable()) {
    const auto* const option = command.get_option_no_throw(std::string("--") + setting.name);
    if (option && option->count() > 0) given.insert(setting.name);
  }
  return given;
}
