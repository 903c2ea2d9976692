// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/model/StripIdFile.h"

#include <optional>
#include <set>

#include <fmt/format.h>

#include "adjustment/model/LineReader.h"
#include "adjustment/model/Scanner.h"

namespace Velorn {
namespace {

struct Record {
  std::uint32_t id;
  std::string name;
  bool isStrip;
};

std::optional<Record> recordIn(std::string_view line) {
  Scanner scanner(line);
  const bool labelled = scanner.take("id: ");
  const auto id = scanner.takeUnsigned();
  const bool hasFile = scanner.take(" file: ");
  const std::string_view rest = scanner.rest();
  constexpr std::string_view label = " type: ";
  const auto type = rest.rfind(label);  // the last one: a path may hold that text too
  if (!labelled || !id || !hasFile || type == std::string_view::npos) return std::nullopt;
  const std::string_view word = rest.substr(type + label.size());
  if (word != "strip" && word != "groundtruth" && word != "traj") return std::nullopt;
  const std::filesystem::path path(rest.substr(0, type));
  return Record{*id, path.filename().string(), word == "strip"};
}

}  // namespace

std::string readStripIdFile(const std::filesystem::path& path, StripNames& names) {
  StripNames read;
  std::set<std::uint32_t> ids;
  std::set<std::string> known;
  LineReader lines(path);
  for (std::string_view line; lines.next(line);) {
    const auto record = recordIn(line);
    if (!record) return lines.refused(fmt::format("names no file: {}", line));
    if (!ids.insert(record->id).second)
      return lines.refused(fmt::format("id {} again", record->id));
    if (!record->isStrip) continue;
    if (!known.insert(record->name).second) {
      return lines.refused(fmt::format("a second strip named {}", record->name));
    }
    read[record->id] = record->name;
  }
  if (!lines.fault().empty()) return lines.fault();
  names.swap(read);
  return {};
}

}  // namespace Velorn
