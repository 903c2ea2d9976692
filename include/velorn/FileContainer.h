// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// All input files of a run and the numbers by which they are known everywhere else.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/plome/StringList.h"
#include <velorn/Visibility.h>

namespace Velorn {

/// The numbered list of input files. A file's id is its place in the list: first the strips in
/// ascending order of their paths, then the one ground truth, then the trajectories as given.
class VELORN_EXPORT FileContainer {
 public:
  /// Fills an empty container. A strip given twice is held once, with a warning on the console.
  /// @param strips        names of strip files, at least one
  /// @param groundTruth   name of the one ground-truth file
  /// @param trajectories  names of trajectory files, separated by commas; a blank belongs to a name
  /// @return empty, or "FileContainer::add: <fault>"; what was added before the fault stays in the
  ///         container. A container that holds files already is left as it is.
  std::string add(const std::shared_ptr<Plome::StringList>& strips, const std::string& groundTruth,
                  const std::string& trajectories);

  /// Files by type, in the order of their ids. A file without a type, as a second ground truth that
  /// was refused, is in none of them.
  /// @{
  std::vector<std::filesystem::path> getStripFiles() const;
  std::vector<std::filesystem::path> getTrajectories() const;
  std::vector<std::filesystem::path> getGroundTruth() const;
  std::vector<std::filesystem::path> getStripFilesAndGroundTruth() const;
  /// @}

  /// The rasters of the strips and of the ground truth: their file names in `folder`.
  std::vector<std::filesystem::path> getStripFilesAndGroundTruthRaster(
      const std::filesystem::path& folder) const;

  /// An id that is not below the number of files ENDS THE PROCESS with exit status 2, after two
  /// messages on the console.
  std::filesystem::path getFileAccordingID(std::uint32_t id) const;

  /// True when `path` has the file name of the ground truth, in whatever folder.
  bool isFittingPlane(const std::filesystem::path& path) const;

  /// Writes a line "id: <id> file: <path> type: <type>" per file that has a type.
  /// @param echo  writes the lines to the console too
  /// Nothing happens when the file cannot be opened; one that was opened and does not take the
  /// lines (a full disk) is told on the console.
  void writeStripID(const std::filesystem::path& path, const bool& echo) const;

  /// True when files and types have come apart, as after a second ground truth; false for a sound
  /// container and for an empty one.
  explicit operator bool() const;

 private:
  struct Record {
    std::string type;
    std::uint32_t id;
  };

  std::string addStrips(const Plome::StringList& strips);
  std::string addGroundTruth(const std::string& groundTruth);
  std::string addTrajectories(const std::string& trajectories);
  void addRecord(std::string_view type);
  template <typename Wanted>
  std::vector<std::filesystem::path> filesWhoseType(Wanted wanted) const;

  std::set<std::filesystem::path> stripPaths;  // finds duplicates
  std::vector<std::filesystem::path> files;
  std::vector<Record> records;  // record i is of file i; never more records than files
  std::uint32_t nextId = 0;
};

}  // namespace Velorn
