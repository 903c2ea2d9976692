// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/RunFolder.h"

#include <charconv>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include <velorn/InputParameter.h>
#include <velorn/flight/Error.h>

namespace Velorn::Flights::Comparison {
namespace {

namespace fs = std::filesystem;

bool isFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

/// Paths of the summary may be absolute. Empty for the summary of a run that did not adjust.
std::optional<ModelFiles> namedIn(const fs::path& summary, const fs::path& root) {
  ModelFiles files;
  try {
    std::ifstream stream(summary);
    const auto document = nlohmann::json::parse(stream);
    if (!document.contains("files")) return {};
    const auto& names = document.at("files");
    files = {root / names.at("sections").get<std::string>(),
             root / names.at("parameters").get<std::string>(),
             root / names.at("strip_ids").get<std::string>()};
  } catch (const nlohmann::json::exception& fault) {
    throw Error(
        fmt::format("{}: names no files of an adjustment: {}", summary.string(), fault.what()));
  }
  for (const auto& file : {files.sections, files.parameters, files.stripIds}) {
    if (isFile(file)) continue;
    throw Error(fmt::format("{}: no such file; {} names it", file.string(), summary.string()));
  }
  return files;
}

/// The three files of one suffix, when they are all there.
std::optional<ModelFiles> companionsOf(const fs::path& parameters) {
  const std::string beginning = "Parameter", name = parameters.filename().string();
  if (!name.starts_with(beginning) || name.ends_with(".exact") || name.ends_with(".part")) {
    return {};
  }
  const std::string suffix = name.substr(beginning.size());
  const fs::path folder = parameters.parent_path();
  ModelFiles files{folder / ("Sections" + suffix), parameters, folder / ("StripID" + suffix)};
  if (!isFile(files.sections) || !isFile(files.parameters) || !isFile(files.stripIds)) return {};
  return files;
}

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

std::optional<ModelFiles> modelFilesOf(const fs::path& root) {
  if (isFile(root / "summary.json")) {
    if (auto named = namedIn(root / "summary.json", root)) return named;
  }
  std::optional<ModelFiles> newest;
  fs::file_time_type newestTime;
  std::error_code fault;
  const fs::path folder = root / Velorn::InputParameter().getPrameterPath();
  for (const auto& entry : fs::directory_iterator(folder, fault)) {
    auto files = companionsOf(entry.path());
    if (!files) continue;
    const auto time = fs::last_write_time(entry.path(), fault);
    if (newest && time <= newestTime) continue;
    newest = std::move(files);
    newestTime = time;
  }
  return newest;
}

StripNames stripNamesIn(const fs::path& stripIds) {
  StripNames names;
  std::ifstream file(stripIds);
  std::string line;
  while (std::getline(file, line)) {
    if (const auto strip = stripIn(line)) names.insert(*strip);
  }
  if (names.empty()) throw Error(stripIds.string() + ": names no strip");
  return names;
}

}  // namespace Velorn::Flights::Comparison
