// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A container file that is open for reading, and the places in it that a bundle refers to.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/strandel/hdf5/Library.h"

namespace Strandel::Hdf5 {

/// Stays readable, with the content it had when it was opened, also after another file has taken
/// its name.
class StoredFile {
 public:
  /// @throws Fault  when the path is not a readable container file
  explicit StoredFile(std::filesystem::path path);
  ~StoredFile();
  StoredFile(const StoredFile&) = delete;
  StoredFile& operator=(const StoredFile&) = delete;

  const std::filesystem::path& path() const { return path_; }
  hid_t id() const { return file_.id(); }
  std::size_t bytes() const { return bytes_; }

 private:
  std::filesystem::path path_;
  std::size_t bytes_ = 0;
  Handle file_;
};

/// Where a node of a bundle comes from, and what lies there that a bundle cannot represent.
struct StoredNode {
  std::shared_ptr<const StoredFile> file;
  std::string object;                          ///< absolute name in the file
  std::vector<std::string> foreignObjects;     ///< names of objects in it
  std::vector<std::string> foreignAttributes;  ///< names of its attributes
};

}  // namespace Strandel::Hdf5
