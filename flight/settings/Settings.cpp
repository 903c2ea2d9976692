// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <map>
#include <system_error>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <glob.h>

#include "flight/strips/OrFail.h"
#include <velorn/flight/SettingsTable.h>

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

/// Only * and ? stand for letters; brackets are met in names of folders.
std::string globOf(const std::string& pattern) {
  std::string escaped;
  for (const char letter : pattern) {
    if (letter == '[' || letter == '\\') escaped += '\\';
    escaped += letter;
  }
  return escaped;
}

/// The files of a pattern in the order of their names; a name without a pattern is itself.
std::vector<std::string> filesOf(const std::string& pattern, const char* key) {
  std::error_code fault;
  if (pattern.find_first_of("*?") == std::string::npos || fs::exists(pattern, fault)) {
    return {pattern};
  }
  glob_t found{};
  const int status = glob(globOf(pattern).c_str(), 0, nullptr, &found);
  std::vector<std::string> files;
  if (status == 0) files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  globfree(&found);
  if (files.empty()) throw Error(fmt::format("{}: no file matches {}", key, pattern));
  return files;
}

void expand(std::vector<std::string>& patterns, const char* key) {
  std::vector<std::string> files;
  for (const auto& pattern : patterns) {
    const auto some = filesOf(pattern, key);
    files.insert(files.end(), some.begin(), some.end());
  }
  patterns = std::move(files);
}

void requireFile(const char* key, const std::string& file) {
  std::error_code fault;
  if (fs::is_regular_file(file, fault)) return;
  throw Error(fmt::format("{}: {}: {}", key, file,
                          fs::exists(file, fault) ? "is not a file" : "no such file"));
}

/// Rasters and adjusted strips have the file names of the strips.
void checkNames(const FlightSettings& settings) {
  std::map<std::string, std::string> names;
  const auto add = [&](const std::string& file) {
    const auto [other, isNew] = names.emplace(fs::path(file).stem().string(), file);
    if (isNew) return;
    throw Error(fmt::format("{} and {}: two files of one name; their rasters would collide",
                            other->second, file));
  };
  for (const auto& strip : settings.strips) add(strip);
  if (!settings.groundTruth.empty()) add(settings.groundTruth);
}

void checkFiles(const FlightSettings& settings) {
  if (settings.strips.empty()) throw Error("strips: none were named", Error::BadSettings);
  if (settings.trajectories.empty()) throw Error("trajectory: none was named", Error::BadSettings);
  for (const auto& strip : settings.strips) requireFile("strips", strip);
  for (const auto& file : settings.trajectories) {
    requireFile("trajectory", file);
    if (file.find(',') == std::string::npos) continue;
    throw Error(fmt::format("trajectory: {}: the name must not hold a comma", file));
  }
  if (!settings.groundTruth.empty()) requireFile("ground-truth", settings.groundTruth);
  if (settings.groundTruth.find(',') != std::string::npos) {
    throw Error(
        fmt::format("ground-truth: {}: the name must not hold a comma", settings.groundTruth));
  }
  if (settings.groundTruth.empty() && !settings.model.isRelative) {
    throw Error(
        "ground-truth: none was named. The absolute position of the block hangs on it; "
        "relative = true goes without",
        Error::BadSettings);
  }
  checkNames(settings);
}

void checkSteps(const FlightSettings& settings) {
  const auto has = [&](const char* word) { return std::ranges::count(settings.steps, word) > 0; };
  if (has("+adjustment") && !has("+optimization")) {
    throw Error(
        "steps: +adjustment takes the model that +optimization makes; `velorn georeference` takes "
        "one of an earlier run",
        Error::BadSettings);
  }
}

/// A folder of its own that hides none of the others.
void checkVariant(const std::string& name) {
  const bool isName = name.find('/') == std::string::npos && !name.starts_with('.') &&
                      name != "surfaces" && !name.starts_with("0");
  if (isName) return;
  throw Error(fmt::format("name: {}: a variant has a name without / that begins with neither a dot "
                          "nor 0 and is not \"surfaces\"",
                          name),
              Error::BadSettings);
}

/// Zero is for the flight to replace; the library knows none.
void checkConfiguration(Velorn::InputParameter& configuration) {
  const double cell = configuration.MinCellSize, radius = configuration.SearchRadius;
  const Velorn::InputParameter standard;
  if (cell == 0.0) configuration.MinCellSize = standard.MinCellSize;
  if (radius == 0.0) configuration.SearchRadius = standard.SearchRadius;
  const auto fault = configuration.check();
  configuration.MinCellSize = cell;
  configuration.SearchRadius = radius;
  orFail(fault);
}

}  // namespace

void complete(FlightSettings& settings) {
  checkValues(settings);
  checkSteps(settings);
  checkVariant(settings.variant);
  expand(settings.strips, "strips");
  expand(settings.trajectories, "trajectory");
  std::ranges::sort(settings.strips, [](const fs::path& a, const fs::path& b) { return a < b; });
  complete(settings.model, settings.strips.size());
  checkFiles(settings);
  auto& configuration = settings.configuration();
  // The records of a run stay true when the next one is called from elsewhere.
  if (!configuration.RootPath.empty()) {
    configuration.RootPath = fs::absolute(configuration.RootPath).lexically_normal();
  }
  configuration.Options = Plome::FlagList(fmt::format("{}", fmt::join(settings.steps, " ")), ' ');
  configuration.GroundTruth = settings.groundTruth;
  configuration.Trajectories = fmt::format("{}", fmt::join(settings.trajectories, ","));
  configuration.StripFiles = std::make_shared<Plome::StringList>(settings.strips);
  checkConfiguration(configuration);
}

}  // namespace Velorn::Flights
