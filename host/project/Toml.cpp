// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/project/Toml.h"

#include <algorithm>

#include <fmt/format.h>
#include <toml++/toml.h>

#include <velorn/flight/Error.h>

using Velorn::Flights::Error;

namespace Toml {
namespace {

toml::table parsed(std::string_view text, const std::filesystem::path& file) {
  try {
    return toml::parse(text);
  } catch (const toml::parse_error& fault) {
    throw Error(fmt::format("{}: line {}: is no TOML: {}", file.string(), fault.source().begin.line,
                            fault.description()),
                Error::BadSettings);
  }
}

/// Adds one value; false for what has no place in a list of settings.
bool add(const toml::node& node, std::vector<Value>& values) {
  if (const auto* const flag = node.as_boolean()) {
    values.emplace_back(flag->get());
  } else if (const auto* const whole = node.as_integer()) {
    values.emplace_back(whole->get());
  } else if (const auto* const number = node.as_floating_point()) {
    values.emplace_back(number->get());
  } else if (const auto* const text = node.as_string()) {
    values.emplace_back(text->get());
  } else {
    return false;
  }
  return true;
}

}  // namespace

bool isToml(std::string_view text) {
  try {
    static_cast<void>(toml::parse(text));
    return true;
  } catch (const toml::parse_error&) {
    return false;
  }
}

std::vector<Entry> entriesOf(std::string_view text, const std::filesystem::path& file) {
  std::vector<Entry> entries;
  for (const auto& [key, node] : parsed(text, file)) {
    Entry entry{std::string(key.str()), key.source().begin.line, {}, node.is_array()};
    bool isKnown = true;
    if (const auto* const list = node.as_array()) {
      for (const auto& one : *list) isKnown = isKnown && add(one, entry.values);
    } else {
      isKnown = add(node, entry.values);
    }
    if (!isKnown) {
      throw Error(
          fmt::format("{}: line {}: {}: a project file has no sections, dots in keys, dates "
                      "or lists within lists",
                      file.string(), entry.line, entry.key),
          Error::BadSettings);
    }
    entries.push_back(std::move(entry));
  }
  std::ranges::stable_sort(entries, {}, &Entry::line);
  return entries;
}

std::string quoted(const std::string& text) {
  std::string literal = "\"";
  for (const char letter : text) {
    const auto code = static_cast<unsigned char>(letter);
    if (letter == '"' || letter == '\\') {
      literal += {'\\', letter};
    } else if (code < 0x20 || code == 0x7F) {
      literal += fmt::format("\\u{:04X}", code);
    } else {
      literal += letter;
    }
  }
  literal += '"';
  if (!isToml("text = " + literal)) {
    throw Error(
        fmt::format("{}: is no UTF-8, as a project file has to be; give it as a flag", text),
        Error::BadSettings);
  }
  return literal;
}

std::string textOf(const Value& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) return quoted(*text);
  return std::visit(
      [](const auto& plain) -> std::string {
        if constexpr (std::is_arithmetic_v<std::decay_t<decltype(plain)>>) {
          return fmt::format("{}", plain);
        } else {
          return plain;
        }
      },
      value);
}

}  // namespace Toml
