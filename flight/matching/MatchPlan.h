// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which strips overlap, and how many correspondences each two may have: known from the rasters,
// before any search.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "flight/matching/GroundTruth.h"
#include "flight/matching/Match.h"
#include "flight/matching/PlanHull.h"

namespace Velorn::Flights {

/// Two overlapping strips, or a strip and the ground truth.
struct PlannedPair {
  std::uint32_t i, j;          ///< file ids
  std::size_t candidates = 0;  ///< representatives of I in J's polygon; 0 with the ground truth
  std::size_t room = 0;        ///< correspondences that are kept at most
};

struct MatchPlan {
  std::vector<PlanHull> hulls;     ///< of the rasters' points
  std::vector<PlannedPair> pairs;  ///< of strips, by i and j
  std::vector<PlannedPair> known;  ///< with the ground truth
  std::size_t maxCorrespondences = 0;

  std::size_t candidates() const;  ///< of all pairs of strips
};

/// At most a tenth of all correspondences is for the ground truth, the same for each strip that has
/// some; 200 where that is less, as an adjustment wants a hundred. The pairs of strips share the
/// rest evenly, as far as they have candidates.
/// @throws Error that names the file
MatchPlan planOf(const Velorn::InputParameter& configuration, SurfaceStore& surfaces,
                 const MatchOptions& options, const GroundTruth& groundTruth);

}  // namespace Velorn::Flights
