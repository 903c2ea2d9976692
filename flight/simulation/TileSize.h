// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Shared by the sources of the terrain only.
#pragma once

namespace Velorn::Flights::Simulation {

constexpr double tileSize = 40.0;  ///< edge of a tile [m]

}  // namespace Velorn::Flights::Simulation
