// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/plome/UnfinishedFiles.h"

#include <cerrno>
#include <cstdio>

#include <unistd.h>

#include "platform/plome/ReplacedFile.h"

namespace Plome {

UnfinishedFiles& UnfinishedFiles::ofThisProcess() {
  static auto* const files = new UnfinishedFiles;
  return *files;
}

std::unique_lock<std::mutex> UnfinishedFiles::lockedUnlessOver() {
  std::unique_lock lock(mutex_);
  never_.wait(lock, [this] { return !isOver_; });
  return lock;
}

void UnfinishedFiles::add(const std::filesystem::path& temporary) {
  const auto lock = lockedUnlessOver();
  files_.insert(temporary);
}

void UnfinishedFiles::remove(const std::filesystem::path& temporary) {
  const auto lock = lockedUnlessOver();
  files_.erase(temporary);
  unlink(temporary.c_str());
}

int UnfinishedFiles::rename(const std::filesystem::path& temporary,
                            const std::filesystem::path& target) {
  const auto lock = lockedUnlessOver();
  if (std::rename(temporary.c_str(), target.c_str()) != 0) return errno;
  files_.erase(temporary);
  return 0;
}

void UnfinishedFiles::removeAllForGood() {
  const std::lock_guard lock(mutex_);
  isOver_ = true;
  for (const auto& file : files_) unlink(file.c_str());
}

void removeUnfinishedFiles() {
  UnfinishedFiles::ofThisProcess().removeAllForGood();
}

}  // namespace Plome
