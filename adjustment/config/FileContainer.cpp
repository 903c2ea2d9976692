// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include <fmt/format.h>

#include "platform/morvane/Console.h"
#include <velorn/FileContainer.h>

namespace Velorn {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view strip = "strip";
constexpr std::string_view groundTruthWord = "groundtruth";
constexpr std::string_view trajectory = "traj";

/// A path whose status cannot be determined counts as absent.
bool exists(const fs::path& path) {
  std::error_code fault;
  const fs::file_status status = fs::status(path, fault);
  return !fault && fs::exists(status);
}

/// The pieces between the commas, empty ones included.
std::vector<std::string> splitAtCommas(std::string_view text) {
  std::vector<std::string> pieces;
  for (auto comma = text.find(','); comma != std::string_view::npos; comma = text.find(',')) {
    pieces.emplace_back(text.substr(0, comma));
    text.remove_prefix(comma + 1);
  }
  pieces.emplace_back(text);
  return pieces;
}

}  // namespace

std::string FileContainer::add(const std::shared_ptr<Plome::StringList>& strips,
                               const std::string& groundTruth, const std::string& trajectories) {
  // A second call would number the strips that are already known by their ids anew.
  if (!files.empty()) return "FileContainer::add: The container holds files already";
  if (!strips || strips->empty()) return "FileContainer::add: No strips provided";
  if (auto fault = addStrips(*strips); !fault.empty()) return fault;
  if (auto fault = addGroundTruth(groundTruth); !fault.empty()) return fault;
  return addTrajectories(trajectories);
}

std::string FileContainer::addStrips(const Plome::StringList& strips) {
  for (const auto& name : strips) {
    if (!exists(name)) return "FileContainer::add: Strip file does not exist: " + name;
    if (stripPaths.insert(name).second) {
      files.emplace_back(name);
    } else {
      Morvane::Console::writeLine("Warning: Duplicated File: " + name);
    }
  }
  std::sort(files.begin(), files.end());
  for (std::size_t i = 0; i < files.size(); ++i) addRecord(strip);
  return {};
}

std::string FileContainer::addGroundTruth(const std::string& groundTruth) {
  if (groundTruth.empty()) return "FileContainer::add: no ground truth available: ";
  const auto pieces = splitAtCommas(groundTruth);
  for (const auto& piece : pieces) {
    if (!exists(piece)) return "FileContainer::add: Ground truth file does not exist: " + piece;
    files.emplace_back(piece);
  }
  addRecord(groundTruthWord);  // one, whatever the number of files: see operator bool
  if (pieces.size() != 1) return "FileContainer::add: So far only ONE ground truth file is allowed";
  return {};
}

std::string FileContainer::addTrajectories(const std::string& trajectories) {
  if (trajectories.empty()) return "FileContainer::add: No trajectories provided";
  for (const auto& piece : splitAtCommas(trajectories)) {
    if (!exists(piece)) return "FileContainer::add: trajectory does not exist: " + piece;
    files.emplace_back(piece);
    addRecord(trajectory);
  }
  return {};
}

void FileContainer::addRecord(std::string_view type) {
  records.push_back({std::string(type), nextId++});
}

template <typename Wanted>
std::vector<fs::path> FileContainer::filesWhoseType(Wanted wanted) const {
  std::vector<fs::path> chosen;
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (wanted(records[i].type)) chosen.push_back(files[i]);
  }
  return chosen;
}

std::vector<fs::path> FileContainer::getStripFiles() const {
  return filesWhoseType([](std::string_view type) { return type == strip; });
}

std::vector<fs::path> FileContainer::getTrajectories() const {
  return filesWhoseType([](std::string_view type) { return type == trajectory; });
}

std::vector<fs::path> FileContainer::getGroundTruth() const {
  return filesWhoseType([](std::string_view type) { return type == groundTruthWord; });
}

std::vector<fs::path> FileContainer::getStripFilesAndGroundTruth() const {
  return filesWhoseType(
      [](std::string_view type) { return type == strip || type == groundTruthWord; });
}

std::vector<fs::path> FileContainer::getStripFilesAndGroundTruthRaster(
    const fs::path& folder) const {
  auto rasters = filesWhoseType([](std::string_view type) { return type != trajectory; });
  for (auto& raster : rasters) raster = folder / raster.filename();
  return rasters;
}

fs::path FileContainer::getFileAccordingID(std::uint32_t id) const {
  if (id < files.size()) return files[id];
  Morvane::Console::writeLine(
      "fs::path FileContainer::getFileAccordingID: Error file id exceeds range of file list!");
  Morvane::Console::writeLine(fmt::format("ID:{} files.size() {}", id, files.size()));
  std::exit(2);
}

bool FileContainer::isFittingPlane(const fs::path& path) const {
  const auto planes = getGroundTruth();
  return std::any_of(planes.begin(), planes.end(),
                     [&](const fs::path& plane) { return plane.filename() == path.filename(); });
}

void FileContainer::writeStripID(const fs::path& path, const bool& echo) const {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) return;
  for (std::size_t i = 0; i < records.size(); ++i) {
    const std::string line =
        fmt::format("id: {} file: {} type: {}", records[i].id, files[i].string(), records[i].type);
    file << line << '\n';
    if (echo) Morvane::Console::writeLine(line);
  }
  file.close();
  if (!file) {
    Morvane::Console::writeLine("FileContainer::writeStripID: Failed to write the file:" +
                                path.string());
  }
}

FileContainer::operator bool() const {
  return !files.empty() && records.size() != files.size();
}

}  // namespace Velorn
