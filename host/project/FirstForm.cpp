// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/project/FirstForm.h"

#include <charconv>
#include <optional>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/project/Toml.h"

namespace {

constexpr std::string_view blanks = " \t\r";
constexpr std::string_view quotes = "\"'`";

bool contains(std::string_view text, char letter) {
  return text.find(letter) != std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
  const auto begin = text.find_first_not_of(blanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// The parts between separators that stand outside of quotes; of several blanks none is a part.
std::vector<std::string_view> parted(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  char quote = '\0';
  std::size_t begin = 0;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    const bool isEnd = i == text.size() || (quote == '\0' && text[i] == separator);
    if (isEnd) {
      const auto part = trimmed(text.substr(begin, i - begin));
      if (separator != ' ' || !part.empty()) parts.push_back(part);
      begin = i + 1;
    } else if (quote != '\0') {
      if (text[i] == quote) quote = '\0';
    } else if (contains(quotes, text[i])) {
      quote = text[i];
    }
  }
  return parts;
}

template <typename T>
std::optional<T> numberOf(std::string_view text) {
  T value{};
  const auto end = text.data() + text.size();
  const auto [stop, fault] = std::from_chars(text.data(), end, value);
  return fault == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

/// @return nothing for what was no value, and for a backslash, which meant itself there and begins
/// an
///         escape in TOML: nobody knows in which form it was written
std::optional<std::string> literalOf(std::string_view part) {
  if (part.empty() || contains(part, '\\')) return {};
  if (part.size() > 1 && contains(quotes, part.front()) && part.back() == part.front()) {
    const auto inner = part.substr(1, part.size() - 2);
    if (inner.find_first_of(quotes) == std::string_view::npos) {
      return Toml::quoted(std::string(inner));
    }
  }
  if (part.find_first_of(quotes) != std::string_view::npos) return {};
  if (part == "true" || part == "false") return std::string(part);
  if (const auto whole = numberOf<std::int64_t>(part)) return fmt::format("{}", *whole);
  if (const auto number = numberOf<double>(part)) return fmt::format("{}", *number);
  return Toml::quoted(std::string(part));
}

std::optional<std::string> valueOf(std::string_view text) {
  const bool isBracketed = text.starts_with('[') && text.ends_with(']');
  if (isBracketed) text = text.substr(1, text.size() - 2);
  auto parts = parted(text, ',');
  if (!isBracketed && parts.size() == 1) parts = parted(text, ' ');
  if (parts.empty()) return {};
  std::vector<std::string> literals;
  for (const auto part : parts) {
    const auto literal = literalOf(part);
    if (!literal) return {};
    literals.push_back(*literal);
  }
  if (!isBracketed && literals.size() == 1) return literals.front();
  return fmt::format("[{}]", fmt::join(literals, ", "));
}

std::string converted(std::string_view line) {
  const auto told = trimmed(line.substr(0, line.find('#')));
  const auto equals = told.find('=');
  if (told.empty()) return {};
  if (equals == std::string_view::npos) return std::string(line);
  const auto value = valueOf(trimmed(told.substr(equals + 1)));
  return value ? fmt::format("{} = {}", trimmed(told.substr(0, equals)), *value)
               : std::string(line);
}

}  // namespace

std::string tomlOfFirstForm(std::string_view text) {
  std::string toml;
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    toml += converted(text.substr(0, end)) + '\n';
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return toml;
}
