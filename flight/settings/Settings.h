// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a user says about a run: the files, and how each step works.
//
//     Project project;
//     ProjectKeys keys(command, project);      // every key is a flag of the command
//     ... the command line is parsed ...
//     keys.read(project.file);                 // flags win over the file
//     complete(project);
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "flight/matching/Match.h"
#include "flight/settings/ModelSettings.h"
#include "flight/surfaces/Rasterize.h"

namespace Velorn::Flights {

struct Project {
  std::filesystem::path file;  ///< empty: all was said by flags

  std::vector<std::string> strips;        ///< containers; patterns until complete()
  std::vector<std::string> trajectories;  ///< containers; patterns until complete()
  std::string groundTruth;                ///< container; empty: none

  Model model;  ///< and the configuration, which holds all that the library knows
  std::vector<std::string> steps{"+rasterize", "+correspondences", "+optimization", "+adjustment"};
  unsigned int coarseRounds = 0;  ///< that come first, each half as coarse as the one before
  unsigned int rounds = 5;        ///< of matching and adjusting, at most
  RasterOptions raster;
  MatchOptions match;
  bool compress = false;  ///< what is newly written into adjusted strips

  bool force = false;  ///< steps that are done already are done again
  bool quiet = false;  ///< no progress

  Velorn::InputParameter& configuration() { return model.configuration; }
  const Velorn::InputParameter& configuration() const { return model.configuration; }
  bool does(const char* word) const { return configuration().Options.isSet(word); }
  std::vector<std::filesystem::path> stripFiles() const { return {strips.begin(), strips.end()}; }
  std::vector<std::filesystem::path> trajectoryFiles() const {
    return {trajectories.begin(), trajectories.end()};
  }
};

/// Expands patterns, derives what follows from other values, and refuses what is impossible, before
/// any work: values, words, files that are missing or named twice. Strips are sorted, as their file
/// ids are.
/// @throws Error that names the key or the file
void complete(Project& project);

}  // namespace Velorn::Flights
