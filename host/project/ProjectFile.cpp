// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/project/ProjectFile.h"

#include <fstream>
#include <iterator>
#include <type_traits>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commandline/CommandTable.h"
#include "host/commandline/Nearest.h"
#include "host/project/FirstForm.h"
#include "host/project/Toml.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/SettingsTable.h>

using namespace Velorn::Flights;

namespace {

namespace fs = std::filesystem;

bool isKey(const Setting& setting) {
  return setting.use == SettingUse::Project;
}

/// Puts the value of a key where the setting has its place.
class ValueReader {
 public:
  /// @param where   the file, the line and the key, for messages
  /// @param folder  that relative paths count from
  ValueReader(const Toml::Entry& entry, const Setting& setting, std::string where, fs::path folder)
      : entry_(entry), setting_(setting), where_(std::move(where)), folder_(std::move(folder)) {}

  template <typename T>
  void operator()(T* place) const {
    if (entry_.isList) refuse("a list", "one value");
    *place = read<T>(entry_.values.front());
  }

  template <typename T>
  void operator()(std::vector<T>* place) const {
    place->clear();
    for (const auto& value : entry_.values) {
      if constexpr (std::is_same_v<T, std::string>) {
        if (!entry_.isList && setting_.delimiter == ' ') {  // as the flag has it
          *place = CommandLine::wordsOf(read<T>(value));
          return;
        }
      }
      place->push_back(read<T>(value));
    }
  }

  void operator()(std::map<int, double>* /*place*/) const { refuse("such a value", "none"); }

 private:
  template <typename T>
  T read(const Toml::Value& value) const {
    if constexpr (std::is_same_v<T, bool>) {
      return flagOf(value);
    } else if constexpr (std::is_integral_v<T>) {
      const auto* const whole = std::get_if<std::int64_t>(&value);
      if (!whole) refuse(Toml::textOf(value), "a whole number");
      requireBounds(static_cast<double>(*whole));
      return static_cast<T>(*whole);
    } else if constexpr (std::is_floating_point_v<T>) {
      return numberOf(value);
    } else {
      return textOf(value);
    }
  }

  bool flagOf(const Toml::Value& value) const {
    if (const auto* const flag = std::get_if<bool>(&value)) return *flag;
    const auto* const whole = std::get_if<std::int64_t>(&value);  // 0 and 1, as flags take them
    if (!whole || *whole < 0 || *whole > 1) refuse(Toml::textOf(value), "true or false");
    return *whole == 1;
  }

  double numberOf(const Toml::Value& value) const {
    if (const auto* const whole = std::get_if<std::int64_t>(&value)) {
      return static_cast<double>(*whole);
    }
    const auto* const number = std::get_if<double>(&value);
    if (!number) refuse(Toml::textOf(value), "a number");
    return *number;
  }

  std::string textOf(const Toml::Value& value) const {
    const auto* const text = std::get_if<std::string>(&value);
    if (!text) refuse(Toml::textOf(value), "a text in quotes");
    const bool isFromFolder = setting_.isPath && !text->empty();
    return isFromFolder ? (folder_ / *text).lexically_normal().string() : *text;
  }

  /// Before it becomes a type that holds less.
  void requireBounds(double value) const {
    const auto fault = boundsFault(setting_, value);
    if (!fault.empty()) throw Error(fmt::format("{}: {}", where_, fault), Error::BadSettings);
  }

  [[noreturn]] void refuse(const std::string& found, const char* needed) const {
    throw Error(fmt::format("{}: {} stands there, {} is needed", where_, found, needed),
                Error::BadSettings);
  }

  const Toml::Entry& entry_;
  const Setting& setting_;
  std::string where_;
  fs::path folder_;
};

const Setting& settingOf(const std::string& key, const std::string& where) {
  const auto* const setting = findSetting(key);
  if (setting && isKey(*setting)) return *setting;
  std::vector<std::string> keys;
  for (const auto& one : settingsTable()) {
    if (isKey(one)) keys.emplace_back(one.name);
  }
  throw Error(where + ": no such key" + CommandLine::didYouMean(CommandLine::nearestOf(keys, key)),
              Error::BadSettings);
}

std::vector<Toml::Entry> entriesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw Error(file.string() + ": cannot be opened");
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad()) throw Error(file.string() + ": cannot be read");
  if (Toml::isToml(text)) return Toml::entriesOf(text, file);
  const auto converted = tomlOfFirstForm(text);
  return Toml::entriesOf(Toml::isToml(converted) ? converted : text, file);
}

/// Paths of flags count from where the user is, those of a project file from its folder.
/// @param folder  empty: the path is one of the project file
std::string seenFrom(const fs::path& folder, const fs::path& path) {
  if (folder.empty() || path.empty() || !path.is_relative()) return path.string();
  return fs::absolute(path).lexically_proximate(folder).string();
}

/// A value as it stands in a project file.
class Literal {
 public:
  Literal(const Setting& setting, fs::path folder)
      : setting_(setting), folder_(std::move(folder)) {}

  template <typename T>
  std::string operator()(const T* value) const {
    return of(*value);
  }

  template <typename T>
  std::string operator()(const std::vector<T>* values) const {
    std::vector<std::string> literals;
    for (const auto& value : *values) literals.push_back(of(value));
    return fmt::format("[{}]", fmt::join(literals, ", "));
  }

  std::string operator()(const std::map<int, double>* /*value*/) const { return {}; }

 private:
  std::string of(const std::string& text) const {
    return Toml::quoted(setting_.isPath ? seenFrom(folder_, text) : text);
  }
  std::string of(const fs::path& path) const { return of(path.string()); }
  template <typename T>
  requires std::is_arithmetic_v<T> std::string of(T value)
  const { return fmt::format("{}", value); }

  const Setting& setting_;
  fs::path folder_;
};

std::string literalOf(const Setting& setting, FlightSettings settings, const fs::path& folder) {
  return std::visit(Literal(setting, folder), setting.place(settings));
}

/// What it is, its unit, its bounds or words.
std::string commentOf(const Setting& setting) {
  std::string text = fmt::format("# {}", setting.sentence);
  if (*setting.unit != '\0') text += fmt::format(" [{}]", setting.unit);
  if (!setting.words.empty()) text += fmt::format(": {}", fmt::join(setting.words, ", "));
  return text + "\n";
}

}  // namespace

void readProject(const fs::path& file, const std::set<std::string>& given,
                 FlightSettings& settings) {
  FlightSettings read;  // also what gives way to a flag has to be right
  bool hasRoot = given.contains("root");
  for (const auto& entry : entriesOf(file)) {
    const auto where = fmt::format("{}: line {}: {}", file.string(), entry.line, entry.key);
    const auto& setting = settingOf(entry.key, where);
    const ValueReader reader(entry, setting, where, file.parent_path());
    std::visit(reader, setting.place(read));
    const auto fault = valueFault(setting, read);
    if (!fault.empty()) throw Error(fmt::format("{}: {}", where, fault), Error::BadSettings);
    if (!given.contains(entry.key)) std::visit(reader, setting.place(settings));
    hasRoot = hasRoot || entry.key == "root";
  }
  auto& root = settings.configuration().RootPath;
  if (!hasRoot) root = file.parent_path() / root;
}

std::string projectText(const fs::path& file, const std::set<std::string>& given,
                        const FlightSettings& settings) {
  const auto folder = fs::absolute(file).parent_path();
  std::string text =
      "# A project of `velorn run`, in TOML. Every key is a flag too (--search-radius 5), and "
      "flags "
      "win.\n# Relative paths count from the folder of this file.\n";
  std::string group;
  for (const auto& setting : settingsTable()) {
    if (!isKey(setting)) continue;
    if (setting.group != group) {
      group = setting.group;
      text += fmt::format("\n\n# ---- {} ----\n", group);
    }
    const bool isGiven = given.contains(setting.name);
    // Files have to be named; but for ground truth where none is asked for.
    const bool isNeeded = setting.isPath && !(setting.name == std::string("ground-truth") &&
                                              settings.model.isRelative);
    const std::string example = setting.example;
    const auto value = isGiven           ? literalOf(setting, settings, folder)
                       : example.empty() ? literalOf(setting, {}, {})
                                         : example;
    text += fmt::format("\n{}{}{} = {}\n", commentOf(setting), isGiven || isNeeded ? "" : "# ",
                        setting.name, value);
  }
  return text;
}
