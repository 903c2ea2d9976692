// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/OutputFolder.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"
#include <velorn/InputParameter.h>

namespace Velorn::Flights::Simulation {
namespace {

namespace fs = std::filesystem;

void orFail(const fs::path& path, const char* what, const std::error_code& error,
            Error::Kind kind = Error::NoSpace) {
  if (!error) return;
  throw Error(fmt::format("{}: {}: {}", path.string(), what, error.message()), kind);
}

/// "strip_<digits><ending>".
bool isStripName(const std::string& name, const std::string& ending) {
  const std::string beginning = "strip_";
  if (!name.starts_with(beginning) || !name.ends_with(ending)) return false;
  if (name.size() <= beginning.size() + ending.size()) return false;
  return std::all_of(name.begin() + static_cast<std::ptrdiff_t>(beginning.size()),
                     name.end() - static_cast<std::ptrdiff_t>(ending.size()),
                     [](char c) { return c >= '0' && c <= '9'; });
}

/// As runs name it, so that the folder of a flight can be the root folder of one.
fs::path correspondenceFolder() {
  return Velorn::InputParameter().getCorrespondencePath();
}

/// The files of a folder that bear a name of a flight.
template <typename IsName>
void addNamed(const fs::path& folder, IsName isName, std::set<fs::path>& files) {
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  orFail(folder, "cannot be read", error, Error::BadInput);
  for (; entry != fs::directory_iterator(); entry.increment(error)) {
    if (isName(entry->path().filename().string())) files.insert(entry->path());
  }
  orFail(folder, "cannot be read", error, Error::BadInput);
}

std::set<fs::path> flightIn(const fs::path& folder) {
  std::set<fs::path> files;
  addNamed(
      folder,
      [](const std::string& name) {
        return name == "truth.json" || name == "trajectory.kx" || name == "ground_truth.kx" ||
               isStripName(name, ".kx");
      },
      files);
  addNamed(
      folder / "truth",
      [](const std::string& name) {
        return name == "planes.csv" || isStripName(name, "_planes.kx");
      },
      files);
  const fs::path correspondences = folder / correspondenceFolder();
  std::error_code error;
  if (fs::is_directory(correspondences, error)) {
    addNamed(correspondences, blockNameIn, files);
  }
  return files;
}

}  // namespace

OutputFolder::OutputFolder(fs::path folder, bool overwrite) : folder_(std::move(folder)) {
  makeFolder(folder_);
  makeFolder(folder_ / "truth");
  before_ = flightIn(folder_);
  if (before_.empty()) return;
  if (!overwrite) {
    throw Error(
        fmt::format("{}: holds a flight already ({}): choose another folder, or --overwrite",
                    folder_.string(), before_.begin()->filename().string()));
  }
  std::error_code error;
  fs::remove(folder_ / "truth.json", error);
  orFail(folder_ / "truth.json", "cannot be removed", error);
}

void OutputFolder::removeRemains() const {
  for (const auto& file : before_) {
    if (written_.contains(file)) continue;
    std::error_code error;
    fs::remove(file, error);
    orFail(file, "cannot be removed", error);
  }
}

std::string OutputFolder::stripName(std::size_t index) {
  return fmt::format("strip_{:02}", index + 1);
}

fs::path OutputFolder::correspondences(const BlockName& block) {
  const fs::path folder = correspondenceFolder();
  makeFolder(folder_ / folder);
  return remembered(folder / fileNameOf(block));
}

fs::path OutputFolder::remembered(const fs::path& name) {
  return *written_.insert(folder_ / name).first;
}

}  // namespace Velorn::Flights::Simulation
