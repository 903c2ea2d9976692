// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Columns of a container that has one grid.
#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

#include <fmt/format.h>

#include "host/Failure.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"

namespace Comparison {

class GridFile {
 public:
  /// @throws Failure, naming the file, for one that cannot be read, has not one grid, or fields
  ///         of several lengths
  explicit GridFile(const std::filesystem::path& path) : path_(path) {
    orFail(Strandel::MyStorage(0, 0, 0, 1).load(path, bundle_));
    if (bundle_.grids().size() != 1) {
      throw Failure(fmt::format("{}: has {} grids where one is needed", path.string(),
                                bundle_.grids().size()));
    }
    const auto unequal = bundle_.grids().front()->unequalLengths();
    if (!unequal.empty()) throw Failure(path.string() + ": " + unequal);
  }

  bool has(const char* chartName, const char* name) const {
    const auto chart = bundle_.grids().front()->chart(chartName);
    return chart && chart->field(name);
  }

  /// All values of a field, its fragments one after the other.
  /// @throws Failure, naming file and field
  template <typename T>
  std::vector<T> column(const char* chartName, const char* name) const {
    const auto chart = bundle_.grids().front()->chart(chartName);
    const auto field = chart ? chart->field(name) : nullptr;
    if (!field) {
      throw Failure(fmt::format("{}: has no field {} in {}", path_.string(), name, chartName));
    }
    std::vector<T> all;
    for (const auto fragment : field->fragments()) {
      const auto read = field->values<T>(fragment);
      if (!read) throw Failure(fmt::format("{}: {}: {}", path_.string(), name, read.error));
      all.insert(all.end(), read.values->begin(), read.values->end());
    }
    return all;
  }

 private:
  std::filesystem::path path_;
  Strandel::Bundle bundle_;
};

}  // namespace Comparison
