// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/settings/Settings.h"

#include <algorithm>
#include <array>
#include <map>
#include <system_error>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <glob.h>

#include "flight/strips/OrFail.h"

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 4> stepWords{"+rasterize", "+correspondences",
                                                    "+optimization", "+adjustment"};

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
void checkNames(const Project& project) {
  std::map<std::string, std::string> names;
  const auto add = [&](const std::string& file) {
    const auto [other, isNew] = names.emplace(fs::path(file).stem().string(), file);
    if (isNew) return;
    throw Error(fmt::format("{} and {}: two files of one name; their rasters would collide",
                            other->second, file));
  };
  for (const auto& strip : project.strips) add(strip);
  if (!project.groundTruth.empty()) add(project.groundTruth);
}

void checkFiles(const Project& project) {
  if (project.strips.empty()) throw Error("strips: none were named", Error::BadSettings);
  if (project.trajectories.empty()) throw Error("trajectory: none was named", Error::BadSettings);
  for (const auto& strip : project.strips) requireFile("strips", strip);
  for (const auto& file : project.trajectories) {
    requireFile("trajectory", file);
    if (file.find(',') == std::string::npos) continue;
    throw Error(fmt::format("trajectory: {}: the name must not hold a comma", file));
  }
  if (!project.groundTruth.empty()) requireFile("ground-truth", project.groundTruth);
  if (project.groundTruth.find(',') != std::string::npos) {
    throw Error(
        fmt::format("ground-truth: {}: the name must not hold a comma", project.groundTruth));
  }
  if (project.groundTruth.empty() && !project.model.isRelative) {
    throw Error(
        "ground-truth: none was named. The absolute position of the block hangs on it; "
        "relative = true goes without",
        Error::BadSettings);
  }
  checkNames(project);
}

void checkSteps(const Project& project) {
  for (const auto& word : project.steps) {
    if (std::ranges::find(stepWords, word) != stepWords.end()) continue;
    throw Error(fmt::format("steps: {}: not one of {}", word, fmt::join(stepWords, " ")),
                Error::BadSettings);
  }
  const auto has = [&](const char* word) { return std::ranges::count(project.steps, word) > 0; };
  if (has("+adjustment") && !has("+optimization")) {
    throw Error(
        "steps: +adjustment takes the model that +optimization makes; `velorn georeference` takes "
        "one of an earlier run",
        Error::BadSettings);
  }
}

}  // namespace

void complete(Project& project) {
  checkSteps(project);
  expand(project.strips, "strips");
  expand(project.trajectories, "trajectory");
  std::ranges::sort(project.strips, [](const fs::path& a, const fs::path& b) { return a < b; });
  apply(project.model, project.strips.size());
  checkFiles(project);
  auto& configuration = project.configuration();
  // The records of a run stay true when the next one is called from elsewhere.
  if (!configuration.RootPath.empty()) {
    configuration.RootPath = fs::absolute(configuration.RootPath).lexically_normal();
  }
  configuration.Options = Plome::FlagList(fmt::format("{}", fmt::join(project.steps, " ")), ' ');
  configuration.GroundTruth = project.groundTruth;
  configuration.Trajectories = fmt::format("{}", fmt::join(project.trajectories, ","));
  configuration.StripFiles = std::make_shared<Plome::StringList>(project.strips);
  project.match.neighbours = project.raster.neighbours;
  project.match.neighbourRadius = project.raster.neighbourRadius;
  orFail(configuration.check());
  check(configuration, project.raster);
}

}  // namespace Velorn::Flights
