// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/RunResult.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <system_error>

#include <fmt/format.h>

#include "flight/strips/AdjustedName.h"
#include <velorn/InputParameter.h>
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

/// Of the record of one step; empty for one of another kind, or cut off.
std::vector<fs::path> trajectoriesIn(const fs::path& record) {
  try {
    std::ifstream stream(record);
    const auto document = nlohmann::json::parse(stream);
    std::vector<fs::path> paths;
    for (const auto& stamp : document.at("key").at("trajectory")) {
      paths.emplace_back(stamp.at("path").get<std::string>());
    }
    return paths;
  } catch (const nlohmann::json::exception&) {
    return {};
  }
}

void requireFiles(const std::vector<fs::path>& files, const fs::path& record) {
  for (const auto& file : files) {
    std::error_code ignored;
    if (fs::is_regular_file(file, ignored)) continue;
    throw Error(
        fmt::format("{}: no such file; the run used it, as {} says. --trajectory names "
                    "where it lies now",
                    file.string(), record.string()));
  }
}

}  // namespace

std::vector<fs::path> adjustedStripsIn(const fs::path& folder) {
  std::vector<fs::path> strips;
  std::error_code fault;
  for (const auto& entry : fs::directory_iterator(folder, fault)) {
    if (isAdjustedName(entry.path())) strips.push_back(entry.path());
  }
  if (strips.empty()) {
    throw Error(folder.string() + ": holds no adjusted strips, <strip>_SA.kx" +
                (fault ? ": " + fault.message() : std::string()));
  }
  std::sort(strips.begin(), strips.end());
  return strips;
}

std::vector<fs::path> recordedTrajectories(const fs::path& root) {
  std::vector<fs::path> newest;
  fs::path newestRecord;
  fs::file_time_type newestTime;
  std::error_code fault;
  const fs::path folder = root / Velorn::InputParameter().getStatusPath() / "steps";
  for (const auto& entry : fs::directory_iterator(folder, fault)) {
    auto paths = trajectoriesIn(entry.path());
    const auto time = fs::last_write_time(entry.path(), fault);
    if (paths.empty() || (!newest.empty() && time <= newestTime)) continue;
    newest = std::move(paths);
    newestRecord = entry.path();
    newestTime = time;
  }
  requireFiles(newest, newestRecord);
  return newest;
}

}  // namespace Velorn::Flights
