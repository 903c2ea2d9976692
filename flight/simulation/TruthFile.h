// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The truth of a flight as text: truth.json and the table of the planes.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "flight/simulation/Errors.h"
#include "flight/simulation/Options.h"
#include "flight/simulation/Terrain.h"

namespace Velorn::Flights::Simulation {

/// What is known about one delivered strip.
struct StripTruth {
  std::string file;
  PlannedStrip plan;
  StripErrors errors;
  std::size_t points = 0;
  double lastTime = 0.0;  ///< of its points [s of week]
};

/// Every injected error, as docs/simulation.md describes it.
std::string truthText(const SimulationSettings& options, const MountingValues& nominal,
                      const MountingValues& real, const std::vector<StripTruth>& strips);

/// One line per plane: number, class, a point [m] and the unit normal.
std::string planesText(const Terrain& terrain);

}  // namespace Velorn::Flights::Simulation
