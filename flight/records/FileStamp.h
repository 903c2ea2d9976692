// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// By what a file is known again, and files that must not change while they are worked with.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace Velorn::Flights {

/// What is to be the same for a file to count as unchanged.
struct FileStamp {
  std::string path;
  long long bytes = -1, changed = -1;  ///< size, and time of the last change [ns]; -1: missing
  unsigned long long number = 0;       ///< of the file in its file system

  bool operator==(const FileStamp&) const = default;
};

FileStamp stampOf(const std::filesystem::path& file);

/// Files as they were when the work began. What changes under the work makes it a mixture of both.
class FilesAtRest {
 public:
  FilesAtRest() = default;
  explicit FilesAtRest(const std::vector<std::filesystem::path>& files);

  /// @throws Error that names the first file that is not as it was
  void requireUnchanged() const;

 private:
  std::vector<FileStamp> stamps_;
};

}  // namespace Velorn::Flights
