// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Places along the flight, near which correspondences are evaluated by polynomials.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "adjustment/engine/LocalPlace.h"
#include "adjustment/georef/LocalProjection.h"
#include "adjustment/georef/Projection.h"

namespace Velorn {

/// @param centre  easting, northing, height [m], in the zone
LocalPlace localPlaceAbout(const Vector3<double>& centre, const Projection& projection);

/// The places that serve an adjustment.
class LocalPlaces {
 public:
  static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

  explicit LocalPlaces(const Projection& projection) : projection_(projection) {}

  /// Number of a place near the ground: the last one as long as that is near enough, so that a
  /// flight along the border of two cells does not change between them.
  /// @param ground  about where beams end: easting, northing, height [m]
  /// @return none off the zone
  std::uint32_t near(const Vector3<double>& ground, std::uint32_t last);

  /// @return null for none
  const LocalPlace* operator[](std::uint32_t number) const {
    return number == none ? nullptr : &places_[number];
  }

 private:
  Projection projection_;
  std::vector<LocalPlace> places_;
  std::map<Cell, std::uint32_t> numbers_;
};

}  // namespace Velorn
