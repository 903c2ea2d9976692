// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Keys and values of a TOML file, without the parser's own types; alone knows toml++.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Toml {

using Value = std::variant<bool, std::int64_t, double, std::string>;

struct Entry {
  std::string key;
  std::size_t line = 0;       ///< from 1
  std::vector<Value> values;  ///< one, unless it is a list
  bool isList = false;
};

bool isToml(std::string_view text);

/// The entries of a text in their order.
/// @param file  named in messages
/// @throws Error, naming file and line, for what is no TOML, and for tables, dates and lists in
///         lists
std::vector<Entry> entriesOf(std::string_view text, const std::filesystem::path& file);

/// A text in quotes, with escapes where TOML wants them.
/// @throws Error for what is no UTF-8
std::string quoted(const std::string& text);

/// As it stands in a file.
std::string textOf(const Value& value);

}  // namespace Toml
