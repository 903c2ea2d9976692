// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/FileStamp.h"

#include <sys/stat.h>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {

namespace fs = std::filesystem;

FileStamp stampOf(const fs::path& file) {
  FileStamp stamp;
  stamp.path = fs::absolute(file).lexically_normal().string();
  struct stat status {};
  if (stat(stamp.path.c_str(), &status) != 0) return stamp;
  constexpr long long second = 1'000'000'000;
  stamp.bytes = status.st_size;
  stamp.changed = status.st_mtim.tv_sec * second + status.st_mtim.tv_nsec;
  stamp.number = status.st_ino;
  return stamp;
}

FilesAtRest::FilesAtRest(const std::vector<fs::path>& files) {
  for (const auto& file : files) stamps_.push_back(stampOf(file));
}

void FilesAtRest::requireUnchanged() const {
  for (const auto& stamp : stamps_) {
    if (stampOf(stamp.path) == stamp) continue;
    throw Error(stamp.path +
                ": changed while it was worked with; what came of it is not kept. Run again when "
                "nobody else writes it");
  }
}

}  // namespace Velorn::Flights
