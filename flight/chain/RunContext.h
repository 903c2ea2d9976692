// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What all steps of a run work with: the settings, the files under their ids, and the trajectory.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "flight/records/RunFolder.h"
#include "flight/strips/Watcher.h"
#include "flight/surfaces/SurfaceStore.h"
#include <velorn/FileContainer.h>
#include <velorn/Trajectory.h>
#include <velorn/flight/Settings.h>

namespace Velorn::Flights {

/// A variant is a run with a root of its own below the one that is named.
std::filesystem::path rootOf(const FlightSettings& settings);

struct RunContext {
  /// Makes the folders, reads the trajectory, and refuses inputs that do not belong together, or
  /// are still being written.
  /// @param itsSettings  complete
  /// @throws Error that names the file
  RunContext(FlightSettings itsSettings, Watch watch);
  RunContext(const RunContext&) = delete;
  RunContext& operator=(const RunContext&) = delete;

  const Velorn::InputParameter& configuration() const { return settings.configuration(); }
  bool does(const char* word) const { return configuration().Options.isSet(word); }
  /// What matching reads of all strips and the ground truth.
  std::vector<std::filesystem::path> surfaceFiles() const;
  /// @throws Error that names the strip, trajectory or ground truth which changed since the start
  void requireInputs() const { inputs.requireUnchanged(); }
  void tell(const std::string& line) const { watcher->tell(line); }

  FlightSettings settings;
  std::shared_ptr<Watcher> watcher;
  RunFolder folder;
  std::vector<StripFacts> strips;
  std::optional<ScaleReport> scale;   ///< that the settings follow
  std::filesystem::path groundTruth;  ///< the user's, or one without points
  Velorn::FileContainer files;
  FilesAtRest inputs;
  Velorn::Trajectory trajectory;
  std::size_t memory = 0;  ///< bytes that points may take
  SurfaceStore surfaces;
};

}  // namespace Velorn::Flights
