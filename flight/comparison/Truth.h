// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What is known about a synthetic flight, read from its folder.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "flight/simulation/Errors.h"
#include <velorn/TerrainType.h>

namespace Velorn::Flights::Comparison {

struct TrueStrip {
  std::filesystem::path file;      ///< as delivered
  std::filesystem::path planes;    ///< the planes that its points fell on
  Simulation::StripErrors errors;  ///< corrections of the delivered trajectory: [m], [rad]
  double lastTime = 0.0;           ///< of its points [s of week]
};

struct Truth {
  unsigned int week = 0;                      ///< GPS week of all times
  double rangeNoise = 0.0, angleNoise = 0.0;  ///< standard deviations: [m], [rad]
  Simulation::MountingValues real, nominal;
  std::filesystem::path trajectory;  ///< as delivered
  std::vector<TrueStrip> strips;
  std::vector<Velorn::TerrainType> kindOfPlane;  ///< by the number of the plane
};

/// @throws Error for a folder that holds no whole synthetic flight, naming what is missing
Truth readTruth(const std::filesystem::path& folder);

}  // namespace Velorn::Flights::Comparison
