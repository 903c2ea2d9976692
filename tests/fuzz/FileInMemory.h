// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Readers take paths. This gives bytes one without a disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

/// A regular file with these bytes, under a path that this process can open as often as it likes.
class FileInMemory {
 public:
  FileInMemory(const std::uint8_t* bytes, std::size_t size)
      : descriptor_(memfd_create("fuzzed", MFD_CLOEXEC)) {
    if (write(descriptor_, bytes, size) != static_cast<ssize_t>(size)) {
      throw std::runtime_error("no file in memory");
    }
  }
  ~FileInMemory() { close(descriptor_); }
  FileInMemory(const FileInMemory&) = delete;
  FileInMemory& operator=(const FileInMemory&) = delete;

  std::filesystem::path path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};
