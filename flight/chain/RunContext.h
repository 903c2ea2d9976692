// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What all steps of a run work with: the project, its files under their ids, and the trajectory.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "flight/chain/Inputs.h"
#include "flight/records/StepRecord.h"
#include "flight/settings/Settings.h"
#include <velorn/FileContainer.h>
#include <velorn/Trajectory.h>

namespace Velorn::Flights {

/// Where a run tells what it does.
struct RunOutput {
  std::shared_ptr<Kestrum::LoaderProgress> progress;
  std::function<void(const std::string& line)> tell;
};

struct RunContext {
  /// Makes the folders, reads the trajectory, and refuses inputs that do not belong together.
  /// @param project  complete; outlives this object
  /// @throws Error that names the file
  RunContext(const Project& project, RunOutput output);

  const Velorn::InputParameter& configuration() const { return project.configuration(); }
  std::filesystem::path inRoot(const std::filesystem::path& name) const {
    return configuration().RootPath / name;
  }
  /// Of a strip or the ground truth.
  std::filesystem::path rasterOf(const std::filesystem::path& file) const {
    return inRoot(configuration().getRasterPath()) / file.filename();
  }
  std::vector<std::filesystem::path> rasters() const;
  StepRecord recordOf(const std::string& step) const;

  const Project& project;
  RunOutput output;
  std::vector<StripFacts> strips;
  std::filesystem::path groundTruth;  ///< the user's, or one without points
  Velorn::FileContainer files;
  Velorn::Trajectory trajectory{{}};
};

/// A key begins with the program's version: another one may work otherwise.
Json keyOf(const std::string& step);

/// A short stand-in for a key inside another one (FNV-1a, 64 bits).
std::string digestOf(const Json& key);

}  // namespace Velorn::Flights
