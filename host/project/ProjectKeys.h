// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The keys of a project file, which are the flags of the commands that take one.
#pragma once

#include <filesystem>
#include <set>
#include <string>

#include <velorn/flight/Settings.h>

namespace CLI {
class App;
}

class ProjectKeys {
 public:
  /// Adds all keys as flags to a command; both must outlive this object.
  ProjectKeys(CLI::App& command, Velorn::Flights::FlightSettings& project);

  /// Reads a project file: lines "key = value", lists in brackets, # begins a comment. A key that
  /// was given as a flag keeps the flag's value. Relative paths count from the file's folder.
  /// @throws Error naming the file and the key, which is unknown, there twice, or of a value that
  ///         it cannot have
  void read(const std::filesystem::path& file) const;

  /// A project file with every key: those of the flags that were given as values, the others as
  /// comments with their defaults.
  /// @param file  that it is written to: paths are given as seen from its folder
  /// @throws Error for a value that a project file cannot hold
  std::string text(const std::filesystem::path& file) const;

 private:
  CLI::App& command_;
  Velorn::Flights::FlightSettings& project_;
  std::set<std::string> pathKeys_;
};
