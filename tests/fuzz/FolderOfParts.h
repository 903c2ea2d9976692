// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Readers of several files, or of one with a name of its own: a folder whose files are the parts of
// one input.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/TemporaryFolder.h"

/// One folder for all inputs of a process; a file is written anew for each.
class FolderOfParts {
 public:
  /// The parts of an input between lines of four hyphens go to the files, in their order; files
  /// without a part are empty.
  static std::filesystem::path written(const std::uint8_t* bytes, std::size_t size,
                                       const std::vector<std::string>& names) {
    static const TemporaryFolder folder;
    std::string_view rest(reinterpret_cast<const char*>(bytes), size);
    for (const auto& name : names) {
      constexpr std::string_view mark = "----\n";
      const auto end = names.size() > 1 ? rest.find(mark) : std::string_view::npos;
      const auto part = rest.substr(0, end);
      std::filesystem::create_directories((folder / name).parent_path());
      std::ofstream(folder / name, std::ios::binary)
          .write(part.data(), static_cast<std::streamsize>(part.size()));
      rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + mark.size());
    }
    return folder.path();
  }
};
