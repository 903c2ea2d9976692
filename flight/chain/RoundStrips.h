// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The strips as a round from coarse to fine sees them: thinned, placed by the round before, and
// their planes fitted anew.
#pragma once

#include <algorithm>

#include "flight/chain/RoundRules.h"
#include "flight/chain/RunContext.h"
#include "flight/surfaces/Solution.h"

namespace Velorn::Flights {

/// How coarse a round is. One point counts in every cube whose side is half the distance of the
/// points, times the scale, and a plane takes 64 neighbours, or those of the project where they are
/// more: it is as wide as those of the densest points that are left of all strips, and many of its
/// points are candidates.
struct Coarseness {
  double scale = 1.0;    ///< 1 in the rounds after the coarse ones
  double spacing = 1.0;  ///< distance of neighbouring points of the strips [m]

  bool isCoarse() const { return scale > 1.0; }
  double side() const { return std::max(1e-3, 0.5 * scale * spacing); }
  double fewestRadius() const { return spacingsSearched * scale * spacing; }
  static unsigned int neighbours(unsigned int ofProject) { return std::max(64U, ofProject); }
};

/// The largest of the strips' point distances, so that all are as dense after they are thinned.
/// @throws Error when no strip has sixteen points near each other
double spacingOfStrips(const RunContext& run);

/// Makes the rasters of the round, which stand for the strips, under the same ids.
/// @param folder         of the rasters, emptied first
/// @param solution       that places the points; none: as delivered
/// @param configuration  gets the angle of the round
SurfaceStore stripsOfRound(const RunContext& run, const std::filesystem::path& folder,
                           const Coarseness& coarseness, const Solution* solution,
                           Velorn::InputParameter& configuration);

}  // namespace Velorn::Flights
