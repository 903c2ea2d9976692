// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The ground truth, and the search for its points near those of a strip.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "flight/matching/PairSearch.h"
#include "flight/surfaces/MatchPoints.h"
#include "flight/surfaces/PointTiles.h"

namespace Velorn::Flights {

class GroundTruth {
 public:
  explicit GroundTruth(KnownPoints points);

  const KnownPoints& points() const { return points_; }
  bool empty() const { return points_.places.empty(); }

  /// Median distance of a point from the nearest other one [m]; 0 for fewer than two points.
  double spacing() const { return spacing_; }

  /// Patches are points that are linked by steps of at most three spacings. They have the numbers
  /// from 0 in the order of their first points.
  /// @{
  std::uint32_t patchOf(std::size_t k) const { return patches_[k]; }
  std::size_t patches() const { return patchCount_; }
  /// @}

  /// The nearest point within a radius; none: its distance is infinite.
  Neighbour nearest(const point& place, double radius) const;

  /// True when a point of the ground truth lies within a radius in plan.
  bool isNear(const point& place, double radius) const;

 private:
  double medianSpacing() const;
  void findPatches();

  KnownPoints points_;
  PointTiles tree_, planTree_;
  double spacing_;
  std::vector<std::uint32_t> patches_;
  std::size_t patchCount_ = 0;
};

class ControlTally;

/// The points of a strip with a point of the ground truth within reach: the nearest one. The
/// strip's point is I, of code 10. Too far: beside the ground truth's point, along its plane, by
/// more than its spacing or the search radius. Both normals are the ground truth's; the same for
/// any number of threads.
/// @param reach  [m]
/// @param items  counts what is left out of each patch
/// @param tell   told on the calling thread how many points are done
std::vector<Correspondence> searchGroundTruth(const PartnerSearch& strip,
                                              const GroundTruth& groundTruth, double reach,
                                              CandidateTally& tally, ControlTally& items,
                                              const std::function<void(std::size_t)>& tell);

}  // namespace Velorn::Flights
