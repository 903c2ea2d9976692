// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Georeferencing of a list of strips, as a user orders it.
//
//     checkJob(job);
//     const JobResult result = runJob(job, progress, [](const std::string& line) { ... });
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/kestrum/LoaderProgress.h"

namespace Velorn::Flights {

struct GeoreferencingJob {
  std::vector<std::filesystem::path> strips;        ///< in the user's order
  std::vector<std::filesystem::path> trajectories;  ///< containers
  std::filesystem::path outputFolder;               ///< empty: the strips are changed in place
  std::set<int> selected;                           ///< places in `strips` from 0; empty: all
  bool inverse = false;                             ///< scanner coordinates from world coordinates
  bool compress = false;                            ///< newly written data are deflated
  bool reportEarlyTimes = false;  ///< a time before the trajectory's first is told and a fault
  bool overwrite = false;         ///< outputs of an earlier run are replaced

  /// The files of an adjustment, all three or none; without them lever arm and misalignment are the
  /// trajectory's, and all other corrections zero. On a strip that the adjustment did not know the
  /// global corrections alone act.
  /// @{
  std::filesystem::path sections;
  std::filesystem::path parameters;
  std::filesystem::path stripIds;
  /// @}
};

/// The places of the strips to work on, ascending.
std::vector<std::size_t> placesOf(const GeoreferencingJob& job);

/// Where the strip goes: "<stem>_SA.kx" in the output folder, or the strip itself.
std::filesystem::path outputOf(const GeoreferencingJob& job, std::size_t place);

/// Looks for everything that can be known before any work, so that a long job does not fail in the
/// middle: contradictory wishes, files that are missing or of the wrong kind, two strips of one
/// name, outputs that exist or are an input. Makes the output folder last.
/// @throws Error that names the files or the value
void checkJob(const GeoreferencingJob& job);

struct JobResult {
  std::size_t strips = 0;            ///< worked on
  std::vector<std::string> unknown;  ///< of these, by name, strips that the adjustment did not know
  std::size_t points = 0;            ///< of these strips, as far as they can be opened
  std::size_t faults = 0;            ///< strips with a message
  std::size_t notSaved = 0;          ///< of these, strips that could not be written
  double seconds = 0.0;
};

/// Works on the strips one after the other and goes on after one with a message.
/// @param progress  told of every strip before it begins
/// @param tell      receives "<strip>: <message>"
/// @throws Error when the trajectory or the files of the adjustment cannot be read; no strip is
///         touched then
JobResult runJob(const GeoreferencingJob& job, Kestrum::LoaderProgress& progress,
                 const std::function<void(const std::string&)>& tell);

}  // namespace Velorn::Flights
