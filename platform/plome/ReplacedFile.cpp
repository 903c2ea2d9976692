// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/plome/ReplacedFile.h"

#include <atomic>
#include <cerrno>
#include <regex>

#include <sys/stat.h>
#include <unistd.h>

#include "platform/plome/Descriptor.h"
#include "platform/plome/SystemFault.h"
#include "platform/plome/UnfinishedWork.h"

namespace Plome {
namespace {

namespace fs = std::filesystem;

fs::path behindSymbolicLink(const fs::path& target) {
  std::error_code ignored;
  if (!fs::is_symlink(target, ignored)) return target;
  const fs::path real = fs::canonical(target, ignored);
  return real.empty() ? target : real;
}

fs::path temporaryBeside(const fs::path& target, std::string_view ending) {
  static std::atomic<unsigned> count{0};
  fs::path name = target;
  name += "." + std::to_string(getpid()) + "-" + std::to_string(count++) + ".part";
  name += ending;
  return name;
}

Descriptor opened(const fs::path& path, int flags) {
  return Descriptor(open(path.c_str(), flags | O_CLOEXEC, 0666));
}

/// @return 0 or the error number
int flushToDisk(const fs::path& path, int flags) {
  const Descriptor file = opened(path, flags);
  if (!file.isOpen() || fsync(file.value()) != 0) return errno;
  return 0;
}

int flushFolder(const fs::path& folder) {
  const int fault = flushToDisk(folder.empty() ? "." : folder, O_RDONLY | O_DIRECTORY);
  return fault == EINVAL ? 0 : fault;  // a file system that does not flush folders
}

void keepPermissions(const fs::path& from, const fs::path& to) {
  struct stat status {};
  if (stat(from.c_str(), &status) == 0) chmod(to.c_str(), status.st_mode & 07777U);
}

int writeWhole(const fs::path& path, std::string_view content) {
  const Descriptor file = opened(path, O_WRONLY | O_CREAT | O_EXCL);
  return file.isOpen() ? file.write(content) : errno;
}

}  // namespace

ReplacedFile::ReplacedFile(const fs::path& target, std::string_view ending)
    : target_(behindSymbolicLink(target)), temporary_(temporaryBeside(target_, ending)) {
  UnfinishedWork::ofThisProcess().add(temporary_);
}

ReplacedFile::~ReplacedFile() {
  if (!replaced_) UnfinishedWork::ofThisProcess().remove(temporary_);
}

std::string ReplacedFile::replace(bool toDisk) {
  const auto refused = [this](int code) { return target_.string() + ": " + systemFault(code); };
  struct stat status {};
  if (stat(target_.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    return target_.string() + ": is not a regular file and is not replaced";
  }
  keepPermissions(target_, temporary_);
  if (toDisk) {
    if (const int fault = flushToDisk(temporary_, O_RDONLY)) return refused(fault);
  }
  if (const int fault = UnfinishedWork::ofThisProcess().rename(temporary_, target_)) {
    return refused(fault);
  }
  replaced_ = true;
  // The new content is in place from here on; a folder that cannot be flushed is not worth a
  // failure that would make the caller believe the old file were still there.
  if (toDisk) flushFolder(target_.parent_path());
  return {};
}

bool isTemporaryName(std::string_view name) {
  static const std::regex form(R"(.+\.\d+-\d+\.part.*)");
  return std::regex_match(name.begin(), name.end(), form);
}

std::string replaceFile(const fs::path& target, std::string_view content) {
  ReplacedFile file(target);
  if (const int fault = writeWhole(file.temporary(), content)) {
    return target.string() + ": " + systemFault(fault);
  }
  return file.replace();
}

}  // namespace Plome
