// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a root folder holds, and whether it can be used: written when a run begins and when it ends.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

struct RunState {
  enum class Phase : std::uint8_t { running, interrupted, failed, finished };

  Phase phase = Phase::running;
  std::string steps;    ///< the option words of the run
  std::string message;  ///< of a run that failed

  // Of one that finished:
  std::optional<ModelFiles> model;                          ///< as seen from the root
  std::vector<std::filesystem::path> strips, trajectories;  ///< containers that it used
  bool isGeoreferenced = false;  ///< the adjusted strips are those of the model

  static bool isIn(const std::filesystem::path& root);
  /// A run whose process is gone was interrupted.
  /// @throws Error, naming the file, for a folder without a state, and for one that is none
  static RunState in(const std::filesystem::path& root);
  /// @throws Error of NoSpace
  void write(const std::filesystem::path& root) const;
};

}  // namespace Velorn::Flights
