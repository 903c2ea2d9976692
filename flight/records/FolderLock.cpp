// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/FolderLock.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <sstream>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include "flight/records/Process.h"
#include "platform/plome/ReplacedFile.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

std::string contentOf(int descriptor) {
  std::array<char, 512> text{};
  const auto count = pread(descriptor, text.data(), text.size(), 0);
  return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

/// @return nothing for a file that names nobody
std::optional<Process> ownerIn(const std::string& content) {
  std::istringstream words(content);
  Process owner;
  if (!(words >> owner.host >> owner.number >> owner.start)) return {};
  return owner;
}

/// In the folder, and in those that a run makes there. Others may be somebody's: a variant's, which
/// goes on, or the user's.
void removeLeftovers(const fs::path& folder) {
  std::error_code fault;
  for (const auto& entry : fs::directory_iterator(folder, fault)) {
    std::error_code ignored;
    const auto name = entry.path().filename().string();
    const bool isFolder = entry.is_directory(ignored) && !entry.is_symlink(ignored);
    if (isFolder && (name.starts_with('0') || name == "steps")) {
      removeLeftovers(entry.path());
    } else if (!isFolder && Plome::isTemporaryName(name)) {
      fs::remove(entry, ignored);
    }
  }
}

}  // namespace

FolderLock::FolderLock(const fs::path& folder, Watcher* waiting)
    : folder_(folder),
      file_(folder / "lock"),
      descriptor_(open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {
  if (!descriptor_.isOpen()) {
    throw Error(file_.string() + ": " + std::generic_category().message(errno), Error::NoSpace);
  }
  for (bool isTold = false; const auto owner = taken(); isTold = true) {
    const auto inUse = fmt::format("{}: in use by {}", folder_.string(), *owner);
    if (!waiting) throw Error(inUse);
    if (!isTold) waiting->tell(inUse + "; waiting");
    waiting->report("waiting for another run", 0, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  removeLeftovers(folder_);
}

FolderLock::~FolderLock() {
  if (ftruncate(descriptor_.value(), 0) != 0) return;  // the owner's end is seen in another way
}

/// @return who has the folder; nothing when it is ours now
std::optional<std::string> FolderLock::taken() {
  const bool isLocked = flock(descriptor_.value(), LOCK_EX | LOCK_NB) == 0;
  const bool isHeld = !isLocked && errno == EWOULDBLOCK;
  const auto owner = ownerIn(contentOf(descriptor_.value()));
  const bool isElsewhere = owner && !owner->isHere();
  const bool isAlive = owner && !isLocked && !owner->isGone();  // without locks only the file tells
  if (isHeld || isElsewhere || isAlive) {
    if (!owner) return "another run";
    return fmt::format(
        "process {} of {}{}", owner->number, owner->host,
        isElsewhere ? fmt::format("; if that run is over, remove {}", file_.string()) : "");
  }
  const auto ours = Process::ours();
  const auto text = fmt::format("{} {} {}\n", ours.host, ours.number, ours.start);
  const bool isWritten =
      ftruncate(descriptor_.value(), 0) == 0 &&
      pwrite(descriptor_.value(), text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
  if (isWritten) return {};
  throw Error(file_.string() + ": " + std::generic_category().message(errno), Error::NoSpace);
}

}  // namespace Velorn::Flights
