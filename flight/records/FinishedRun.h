// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The result of a run for those that use it: only what finished is one.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "flight/records/RunFolder.h"
#include "flight/records/RunState.h"

namespace Velorn::Flights {

class FinishedRun {
 public:
  /// @throws Error, naming the folder, for a run that did not finish: what state it is in, and what
  ///         to do
  explicit FinishedRun(const std::filesystem::path& root);

  /// Of the adjusted model; none where the last run did not adjust.
  /// @throws Error for a file that is gone
  std::optional<ModelFiles> modelIfAny() const;
  /// @throws Error for a run that did not adjust
  ModelFiles model() const;
  /// @throws Error for a run that did not georeference
  std::vector<std::filesystem::path> adjustedStrips() const;
  /// The containers that it used.
  /// @throws Error for one that is gone
  /// @{
  std::vector<std::filesystem::path> strips() const;
  std::vector<std::filesystem::path> trajectories() const;
  /// @}

 private:
  RunFolder folder_;
  RunState state_;
};

}  // namespace Velorn::Flights
