// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <set>
#include <string>

/// A new empty folder, removed with all its content when it goes out of scope.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

/// The whole content of a file, or an empty text when there is none.
std::string contentOf(const std::filesystem::path& file);

/// Names of what lies in a folder, not in those below it.
std::set<std::string> namesIn(const std::filesystem::path& folder);

/// Writes a file for a test; throws when it cannot.
void writeContent(const std::filesystem::path& file, const std::string& content);

/// A variable of the environment; empty when it is not set.
std::string variable(const char* name);

/// Gives a variable of the environment another value for one scope.
class OtherVariable {
 public:
  OtherVariable(std::string name, const std::string& value);
  ~OtherVariable();
  OtherVariable(const OtherVariable&) = delete;
  OtherVariable& operator=(const OtherVariable&) = delete;

 private:
  std::string name_, before_;
};

/// What a command prints on its standard output; throws, with its status, when it does not end with
/// 0.
std::string outputOf(const std::string& shellCommand);
