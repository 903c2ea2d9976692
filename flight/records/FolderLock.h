// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Keeps a folder for one run at a time, also among machines that share a disk.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "flight/strips/Watcher.h"
#include "platform/plome/Descriptor.h"

namespace Velorn::Flights {

/// Lies in the file "lock" of the folder, which names its owner. The system takes it from a process
/// that ends in whatever way; on another machine only the file tells, until its run clears it.
class FolderLock {
 public:
  /// Takes the folder, and removes the half files that a killed run left in it and its own folders.
  /// @param waiting  where another run has the folder: waits until it is free, as long as this is
  ///                 not cancelled; none: refuses
  /// @throws Error that names the run which has it, of Interrupted, or of NoSpace
  explicit FolderLock(const std::filesystem::path& folder, Watcher* waiting = nullptr);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  std::optional<std::string> taken();

  std::filesystem::path folder_, file_;
  Plome::Descriptor descriptor_;
};

}  // namespace Velorn::Flights
