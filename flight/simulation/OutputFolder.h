// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The folder of a synthetic flight and the names in it.
#pragma once

#include <cstddef>
#include <filesystem>
#include <set>
#include <string>

#include "flight/strips/BlockName.h"

namespace Velorn::Flights::Simulation {

/// A flight is complete when its truth.json is there: that is written last, and removed first when
/// a flight is replaced.
class OutputFolder {
 public:
  /// Makes the folder, where needed.
  /// @throws Error: it cannot be made; it holds a flight that may not be replaced
  OutputFolder(std::filesystem::path folder, bool overwrite);

  /// Names of files to write; they are remembered.
  /// @{
  std::filesystem::path strip(std::size_t index) { return remembered(stripName(index) + ".kx"); }
  std::filesystem::path planesOfStrip(std::size_t index) {
    return remembered("truth/" + stripName(index) + "_planes.kx");
  }
  std::filesystem::path planes() { return remembered("truth/planes.csv"); }
  std::filesystem::path trajectory() { return remembered("trajectory.kx"); }
  std::filesystem::path groundTruth() { return remembered("ground_truth.kx"); }
  std::filesystem::path correspondences(const BlockName& block);
  std::filesystem::path truth() { return remembered("truth.json"); }
  /// @}

  /// Removes what is left of the flight that was there before.
  /// @throws Error, naming a file that cannot be removed
  void removeRemains() const;

  std::size_t numberOfFiles() const { return written_.size(); }

 private:
  static std::string stripName(std::size_t index);
  std::filesystem::path remembered(const std::filesystem::path& name);

  std::filesystem::path folder_;
  std::set<std::filesystem::path> before_, written_;
};

}  // namespace Velorn::Flights::Simulation
