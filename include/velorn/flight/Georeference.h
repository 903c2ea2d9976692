// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Georeferencing of a list of strips.
#pragma once

#include <cstddef>
#include <filesystem>
#include <set>
#include <vector>

#include <velorn/flight/Reports.h>
#include <velorn/flight/Visibility.h>
#include <velorn/flight/Watch.h>

namespace Velorn::Flights {

struct GeoreferencingInput {
  std::vector<std::filesystem::path> strips;        ///< in the user's order
  std::vector<std::filesystem::path> trajectories;  ///< containers
  std::filesystem::path outputFolder;               ///< empty: the strips are changed in place
  std::set<int> selected;                           ///< places in `strips` from 0; empty: all
  bool inverse = false;                             ///< scanner coordinates from world coordinates
  bool compress = false;                            ///< newly written data are deflated
  bool reportEarlyTimes = false;  ///< a time before the trajectory's first is told and a fault
  bool overwrite = false;         ///< outputs of an earlier run are replaced
  /// Of an adjustment, all three or none; without them lever arm and misalignment are the
  /// trajectory's, and all other corrections zero. On a strip that the adjustment did not know the
  /// global corrections alone act.
  ModelFiles model;
};

/// Looks for everything that can be known before any work, so that a long job does not fail in the
/// middle: contradictory wishes, files that are missing or of the wrong kind, two strips of one
/// name, outputs that exist or are an input, strips that the trajectory does not cover, a model
/// whose sections belong to other times. Then works on the strips one after the other, and goes on
/// after one with a fault, which it tells.
/// @throws Error that names the files or the value; at the end for strips with a fault, the others
///         are written
VELORN_FLIGHT_EXPORT GeoreferencingReport georeference(const GeoreferencingInput& input,
                                                       const Watch& watch);

}  // namespace Velorn::Flights
