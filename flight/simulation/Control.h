// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Ground truth: small patches of points on surfaces that the flight covers.
#pragma once

#include <cstdint>
#include <vector>

#include "flight/simulation/FlightPlan.h"
#include "flight/simulation/Terrain.h"

namespace Velorn::Flights::Simulation {

/// True points on one surface.
struct Patch {
  std::uint32_t plane;
  std::vector<point> points;
};

/// Patches, each on a surface of its own. Ten of the 24 lie on surfaces of 20° and more whose
/// aspects are spread over all directions, ten on horizontal ones and four between; with flat
/// control all are horizontal.
/// @throws Error when the flown area has too few surfaces for that
std::vector<Patch> controlPatches(const Terrain& terrain, const FlightPlan& plan,
                                  const SimulationSettings& options);

}  // namespace Velorn::Flights::Simulation
