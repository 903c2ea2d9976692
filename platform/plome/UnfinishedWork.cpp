// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/plome/UnfinishedWork.h"

#include <cerrno>
#include <csignal>
#include <cstdio>

#include <sys/wait.h>
#include <unistd.h>

#include "platform/plome/ReplacedFile.h"

namespace Plome {

UnfinishedWork& UnfinishedWork::ofThisProcess() {
  static auto* const work = new UnfinishedWork;
  return *work;
}

std::unique_lock<std::mutex> UnfinishedWork::lockedUnlessOver() {
  std::unique_lock lock(mutex_);
  never_.wait(lock, [this] { return !isOver_; });
  return lock;
}

void UnfinishedWork::add(const std::filesystem::path& temporary) {
  const auto lock = lockedUnlessOver();
  files_.insert(temporary);
}

void UnfinishedWork::remove(const std::filesystem::path& temporary) {
  const auto lock = lockedUnlessOver();
  files_.erase(temporary);
  unlink(temporary.c_str());
}

int UnfinishedWork::rename(const std::filesystem::path& temporary,
                           const std::filesystem::path& target) {
  const auto lock = lockedUnlessOver();
  if (std::rename(temporary.c_str(), target.c_str()) != 0) return errno;
  files_.erase(temporary);
  return 0;
}

int UnfinishedWork::startProgram(const std::function<int(pid_t&)>& start, pid_t& process) {
  const auto lock = lockedUnlessOver();
  const int fault = start(process);
  if (fault == 0) programs_.insert(process);
  return fault;
}

pid_t UnfinishedWork::reapProgram(pid_t process, int& status) {
  // Reaped outside the lock, its number could be another's by the time that it is killed.
  const auto lock = lockedUnlessOver();
  const pid_t ended = waitpid(process, &status, WNOHANG);
  if (ended != 0) programs_.erase(process);
  return ended;
}

void UnfinishedWork::abandonForGood() {
  const std::lock_guard lock(mutex_);
  isOver_ = true;
  for (const pid_t program : programs_) kill(-program, SIGKILL);
  for (const auto& file : files_) unlink(file.c_str());
}

void removeUnfinishedFiles() {
  UnfinishedWork::ofThisProcess().abandonForGood();
}

}  // namespace Plome
