// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The temporary files of this process that have not taken their place yet.
#pragma once

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <set>

namespace Plome {

/// One list per process. Once it has been emptied for good, every other call waits for ever: the
/// process is about to end.
class UnfinishedFiles {
 public:
  /// Never destroyed: threads may still write while the process ends.
  static UnfinishedFiles& ofThisProcess();

  void add(const std::filesystem::path& temporary);

  /// Takes a file off the list and off the disk.
  void remove(const std::filesystem::path& temporary);

  /// Renames a file and takes it off the list.
  /// @return 0 or the error number; the file is then still on the list
  int rename(const std::filesystem::path& temporary, const std::filesystem::path& target);

  void removeAllForGood();

 private:
  std::unique_lock<std::mutex> lockedUnlessOver();

  std::mutex mutex_;
  std::condition_variable never_;
  std::set<std::filesystem::path> files_;
  bool isOver_ = false;
};

}  // namespace Plome
