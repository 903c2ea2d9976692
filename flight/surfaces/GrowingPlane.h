// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The plane through as many neighbours of a point as it takes to know its normal.
//
//     GrowingPlane plane(neighbourhood);
//     const PlaneFit fit = plane.through(nearest);   // nearest(count): places, the nearest first
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <span>
#include <vector>

#include "flight/surfaces/NeighbourTree.h"
#include "flight/surfaces/PlaneFit.h"

namespace Velorn::Flights {

/// What a plane is fitted to.
struct Neighbourhood {
  unsigned int points = 16;  ///< the nearest ones, the point itself included
  double radius = 5.0;       ///< within that distance [m]
  unsigned int most = 0;     ///< so many where fewer do not tell the normal; no more than `points`:
                             ///< all planes have as many
  double roughest = std::numeric_limits<double>::infinity();  ///< rougher ones do not grow [m]
};

/// Standard deviations of a normal at which a neighbourhood grows no more, and at which it is no
/// plane [rad].
/// @{
inline constexpr double wellKnownNormal = 1.25 * std::numbers::pi / 180.0;
inline constexpr double unknownNormal = 3.0 * std::numbers::pi / 180.0;
/// @}

/// Grows a neighbourhood twofold at a time until its normal is known well. It goes a step back when
/// the roughness rises by more than chance and noise explain: there is an edge. The noise is a
/// 2.5th of the largest roughness.
class GrowingPlane {
 public:
  explicit GrowingPlane(const Neighbourhood& neighbourhood)
      : neighbourhood_(neighbourhood),
        noise_(neighbourhood.roughest / 2.5),
        room_(std::max(neighbourhood.points, neighbourhood.most)) {}

  /// @param search  search(found) adds the nearest points to `Neighbours`
  /// @param placeOf the place of a found point by its number
  /// @return a plane that does not exist where no neighbourhood has one
  template <typename Search, typename PlaceOf>
  PlaneFit about(const Search& search, const PlaceOf& placeOf) {
    const PlaneFit fit = grown(search, placeOf);
    const bool grows = neighbourhood_.most > neighbourhood_.points;
    return grows && fit.exists() && fit.normalSigma() > unknownNormal ? PlaneFit() : fit;
  }

  /// The neighbours of the plane and those that were looked at beyond, the nearest first.
  std::span<const Neighbour> neighbours() const { return found_; }

 private:
  template <typename Search, typename PlaceOf>
  PlaneFit grown(const Search& search, const PlaceOf& placeOf) {
    PlaneFit fit;
    std::size_t known = 0;  // neighbours that were asked for
    for (std::size_t count = neighbourhood_.points;; count = twice(count)) {
      if (count > known) {
        known = std::min<std::size_t>(room_.size(), known == 0 ? count : 4 * known);
        find(known, search, placeOf);
      }
      const std::size_t there = std::min(count, places_.size());
      const PlaneFit next = planeThrough({places_.data(), there});
      if (fit.exists() && !isAsSmooth(next, fit)) return fit;
      fit = next;
      if (there < count || count >= room_.size() || isEnough(fit)) return fit;
    }
  }

  std::size_t twice(std::size_t count) const { return std::min(2 * count, room_.size()); }

  template <typename Search, typename PlaceOf>
  void find(std::size_t count, const Search& search, const PlaceOf& placeOf) {
    Neighbours nearest({room_.data(), count}, neighbourhood_.radius);
    search(nearest);
    found_ = nearest.found();
    places_.clear();
    for (const Neighbour& one : found_) places_.push_back(placeOf(one.number));
  }

  bool isEnough(const PlaneFit& fit) const {
    if (fit.thickness > neighbourhood_.roughest) return true;
    return fit.exists() && fit.normalSigma() <= wellKnownNormal;
  }

  /// A roughness with n - 3 degrees of freedom scatters by its 1 / sqrt(2 (n - 3)). What is as
  /// thick as it is wide has no roughness that could rise.
  bool isAsSmooth(const PlaneFit& next, const PlaneFit& fit) const {
    constexpr double thick = 3.0, chance = 3.0;  // in standard deviations
    if (!next.exists()) return false;
    if (fit.spread[0] < thick * fit.roughness) return true;
    const double freedom = static_cast<double>(next.points) - 3.0;
    const double most = std::max(fit.roughness, noise_);
    return next.roughness <= most * (1.0 + chance / std::sqrt(2.0 * freedom));
  }

  Neighbourhood neighbourhood_;
  double noise_;  // [m]
  std::vector<Neighbour> room_;
  std::span<const Neighbour> found_;
  std::vector<point> places_;
};

}  // namespace Velorn::Flights
