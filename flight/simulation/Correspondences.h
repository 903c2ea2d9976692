// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Correspondences as a matching without any mistake would find them, in the files that the
// adjustment reads.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "flight/simulation/Control.h"
#include "flight/simulation/Options.h"
#include "flight/simulation/OutputFolder.h"
#include "flight/simulation/Survey.h"

namespace Velorn::Flights::Simulation {

/// What a strip's file says about a measurement beside what was measured.
struct DeliveredPoint {
  point world;       ///< [m]
  vector direction;  ///< from the point to the sensor [m]
};

/// What correspondences are made from; it refers to its parts.
struct MeasuredFlight {
  const std::vector<Plane>& planes;
  const std::vector<Patch>& patches;             ///< the ground truth, its points in this order
  const std::vector<std::vector<Echo>>& strips;  ///< in the order of their file ids
  std::function<DeliveredPoint(const Echo&)> deliver;
};

/// Writes a block for each two strips, and each strip and the ground truth, that have points near
/// each other on common planes. Both points have the plane's normal and the class code of its kind;
/// the first one of a pair with the ground truth has that of ground truth.
/// @return the number of correspondences; below options.correspondences when there are no more
/// @throws Error: a strip without any, fewer with the ground truth than an adjustment wants (then
///         nothing is written), or a file that cannot be written
std::size_t saveCorrespondences(const MeasuredFlight& flight, const SimulationSettings& options,
                                OutputFolder& out);

}  // namespace Velorn::Flights::Simulation
