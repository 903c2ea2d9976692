// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The names of the files that the georeferencing of a strip writes.
#pragma once

#include <filesystem>
#include <string>

namespace Velorn {

/// The container that is written for a strip: the strip itself for an empty folder.
inline std::filesystem::path outputFile(const std::filesystem::path& strip,
                                        const std::string& outputFolder) {
  if (outputFolder.empty()) return strip;
  return outputFolder + "/" + strip.stem().string() + "_SA.kx";
}

/// Where the message of a strip goes: beside its output.
inline std::filesystem::path errorFile(const std::filesystem::path& strip,
                                       const std::string& outputFolder) {
  return outputFile(strip, outputFolder).parent_path() /
         ("ERROR_SCANNER2WORLD_" + strip.stem().string() + ".txt");
}

}  // namespace Velorn
