// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/StripIds.h"

#include <charconv>
#include <fstream>
#include <optional>
#include <string_view>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

/// Takes a text off the beginning of a line, if it is there.
bool take(std::string_view text, std::string_view& line) {
  if (!line.starts_with(text)) return false;
  line.remove_prefix(text.size());
  return true;
}

/// A line "id: 3 file: folder/name.kx type: strip".
std::optional<StripNames::value_type> stripIn(std::string_view line) {
  constexpr std::string_view end = " type: strip";
  std::uint32_t id = 0;
  if (!take("id: ", line) || !line.ends_with(end)) return {};
  line.remove_suffix(end.size());
  const auto number = std::from_chars(line.data(), line.data() + line.size(), id);
  line.remove_prefix(static_cast<std::size_t>(number.ptr - line.data()));
  if (number.ec != std::errc() || !take(" file: ", line) || line.empty()) return {};
  return StripNames::value_type{id, fs::path(line).filename().string()};
}

}  // namespace

StripNames stripNamesIn(const std::filesystem::path& stripIds) {
  StripNames names;
  std::ifstream file(stripIds);
  std::string line;
  while (std::getline(file, line)) {
    if (const auto strip = stripIn(line)) names.insert(*strip);
  }
  if (names.empty()) throw Error(stripIds.string() + ": names no strip");
  return names;
}

}  // namespace Velorn::Flights
