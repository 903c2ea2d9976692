// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <system_error>
#include <utility>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {

/// A folder that is empty at the beginning and goes with its contents.
class ScratchFolder {
 public:
  /// @throws Error of NoSpace
  explicit ScratchFolder(std::filesystem::path folder) : folder_(std::move(folder)) {
    std::error_code fault;
    std::filesystem::remove_all(folder_, fault);
    std::filesystem::create_directories(folder_, fault);
    if (fault) throw Error(folder_.string() + ": " + fault.message(), Error::NoSpace);
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return folder_; }

 private:
  std::filesystem::path folder_;
};

}  // namespace Velorn::Flights
