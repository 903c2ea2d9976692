// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The search for partners of a raster's points among the points of another strip.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "flight/matching/CandidateTally.h"
#include "flight/matching/Correspondence.h"
#include "flight/matching/Match.h"
#include "flight/surfaces/MatchPoints.h"
#include "flight/surfaces/PlaneFit.h"
#include "flight/surfaces/PointTiles.h"

namespace Velorn::Flights {

/// The points of a strip, to be searched in class by class. It refers to them.
class PartnerSearch {
 public:
  PartnerSearch(const MatchPoints& points, const SearchRules& rules);

  const MatchPoints& points() const { return points_; }
  const SearchRules& rules() const { return rules_; }

  /// The nearest point of a class within the radius; none: its distance is infinite.
  /// @param normal  that the point's has to agree with where strips are far apart
  Neighbour nearest(const point& place, std::uint8_t code, const vector& normal) const;

  /// The plane through the neighbourhood of a point among those of its class.
  PlaneFit planeAbout(std::size_t k) const;

 private:
  const MatchPoints& points_;
  SearchRules rules_;
  std::vector<PointTiles> classes_;  // from roof to flat
};

/// The partners of the points of strip I, in their order: the nearest point of the same class in J.
/// A point of J that is the nearest one of several belongs to the nearest of them alone, as two
/// correspondences with one point are not independent; they share it where strips are far apart.
/// Judges candidates too far, with another normal and without a plane; the same for any number of
/// threads.
/// @param candidates  of a raster
/// @param tell        told on the calling thread how many candidates are done
std::vector<Correspondence> searchPartners(const MatchPoints& candidates,
                                           const PartnerSearch& partners, CandidateTally& tally,
                                           const std::function<void(std::size_t)>& tell);

}  // namespace Velorn::Flights
