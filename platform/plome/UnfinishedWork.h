// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Inside this room only: what this process must not leave behind when it ends, temporaries that
// have not replaced their targets yet and programs that it runs.
#pragma once

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <set>

#include <sys/types.h>

namespace Plome {

/// One list per process. Once it has been emptied for good, every other call waits for ever: the
/// process is about to end.
class UnfinishedWork {
 public:
  /// Never destroyed: threads may still write while the process ends.
  static UnfinishedWork& ofThisProcess();

  void add(const std::filesystem::path& temporary);

  /// Takes a file off the list and off the disk.
  void remove(const std::filesystem::path& temporary);

  /// Renames a file and takes it off the list.
  /// @return 0 or the error number; the file is then still on the list
  int rename(const std::filesystem::path& temporary, const std::filesystem::path& target);

  /// Starts a program in a process group of its own.
  /// @param start  fills in the process that leads the group
  /// @return       what it returns: 0 or the error number
  int startProgram(const std::function<int(pid_t&)>& start, pid_t& process);

  /// Takes a program that has ended off the list.
  /// @param status  gets what waitpid says
  /// @return        as waitpid does: 0 while it runs, negative for a process that is not ours
  pid_t reapProgram(pid_t process, int& status);

  void abandonForGood();

 private:
  std::unique_lock<std::mutex> lockedUnlessOver();

  std::mutex mutex_;
  std::condition_variable never_;
  std::set<std::filesystem::path> files_;
  std::set<pid_t> programs_;
  bool isOver_ = false;
};

}  // namespace Plome
