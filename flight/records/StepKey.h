// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Everything that the outputs of a step depend on.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Velorn::Flights {

/// Lines "name = value", in the order in which they were added; two steps are the same when all
/// lines are.
class StepKey {
 public:
  /// Begins with the version of the library, another one may work otherwise.
  explicit StepKey(const std::string& step);

  template <typename T>
  void add(const char* name, const T& value) {
    lines_.push_back(fmt::format("{} = {}", name, value));
  }
  template <typename T>
  void addList(const char* name, const T& values) {
    lines_.push_back(fmt::format("{} = {}", name, fmt::join(values, ", ")));
  }
  void addFiles(const char* name, const std::vector<std::filesystem::path>& files);
  void add(const StepKey& other);

  const std::vector<std::string>& lines() const { return lines_; }
  /// A short stand-in for the key inside another one (FNV-1a, 64 bits).
  std::string digest() const;

 private:
  std::vector<std::string> lines_;
};

}  // namespace Velorn::Flights
