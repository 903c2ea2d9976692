// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where a command writes.
#pragma once

#include <filesystem>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {

/// Makes a folder with all above it, or leaves the one that is there.
/// @throws Error of status Error::NoSpace
inline void makeFolder(const std::filesystem::path& folder) {
  std::error_code fault, state;
  std::filesystem::create_directories(folder, fault);
  if (std::filesystem::is_directory(folder, state)) return;
  throw Error(folder.string() + ": cannot be made a folder" +
                  (fault ? ": " + fault.message() : std::string()),
              Error::NoSpace);
}

/// @throws Error when something of that name is there, also a link that leads nowhere
inline void refuseExisting(const std::filesystem::path& file, bool overwrite) {
  std::error_code fault;
  if (overwrite || !std::filesystem::exists(std::filesystem::symlink_status(file, fault))) return;
  throw Error(file.string() + ": exists; --overwrite replaces it");
}

/// Lies in the folder that an import writes into until all of its containers are there.
inline std::filesystem::path markOfUnfinishedImport(const std::filesystem::path& folder) {
  return folder / "unfinished_import";
}

}  // namespace Velorn::Flights
