// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A candidate of a matching as people look at it: a correspondence, or why it is none.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "platform/geomra/PhysicalSpace.h"
#include <velorn/flight/Visibility.h>

namespace Velorn::Flights {

/// What becomes of a candidate. The counts of `Funnel` take two of them together each time.
enum class Fate : std::uint8_t {
  kept,       ///< a correspondence
  tooFar,     ///< nothing of the class within the search radius; of the ground truth: beside it
  taken,      ///< its nearest point is nearer to another candidate: counted as too far
  angle,      ///< normals disagree
  noPlane,    ///< a point has none, or none whose normal is known: counted as roughness
  roughness,  ///< one of the two neighbourhoods is rougher than most
  outlier,    ///< the distance along the normal is unlike those of most
  thinned     ///< there is no room for it
};
inline constexpr std::size_t fateCount = 8;

/// As files and messages have it: "kept", "too_far", "taken", "angle", "no_plane", "roughness",
/// "outlier", "thinned".
VELORN_FLIGHT_EXPORT const char* nameOf(Fate fate);

/// Places are those that the search took the points to have, in the projection of the trajectory,
/// moved onto the planes where the settings say so. What is not known is NaN.
struct CorrespondenceRow {
  using point = Geomra::PhysicalSpace::point;
  using vector = Geomra::PhysicalSpace::vector;
  static constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

  std::uint32_t stripI = 0, stripJ = 0;  ///< file ids; the ground truth's is the number of strips
  std::optional<std::uint32_t> patch;    ///< id of the ground truth's patch
  Fate fate = Fate::kept;
  std::uint8_t code = 0;  ///< of the class: 10 ground truth, 11 roof, 12 slope, 13 bed, 14 flat
  std::uint32_t weekI = 0, weekJ = 0;       ///< GPS weeks
  double timeI = unknown, timeJ = unknown;  ///< [s of week]
  point placeI;                             ///< of the candidate [m]
  point placeJ{unknown, unknown, unknown};  ///< of its partner, where it has one [m]
  vector normal;                            ///< unit, of the candidate or the ground truth
  double angle = unknown;                   ///< between the rasters' normals [degree]
  double roughnessI = unknown, roughnessJ = unknown;  ///< of the neighbourhoods [m]
  /// n · (Q − P) of the places, and by the model that the round led to [m].
  double before = unknown, after = unknown;
};

}  // namespace Velorn::Flights
