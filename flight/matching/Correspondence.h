// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Two points that were found to lie on one surface, and how a point is moved onto its plane.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "platform/geomra/PhysicalSpace.h"
#include <velorn/SphericalBeing.h>
#include <velorn/flight/CorrespondenceRow.h>

namespace Velorn::Flights {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

/// What holds for all points of a search.
struct SearchRules {
  double radius;                    ///< [m]
  double cosine;                    ///< of the largest angle between normals
  bool ontoPlanes;                  ///< points are moved along their beams onto their own planes
  unsigned int neighbours;          ///< of the partner's plane
  double neighbourRadius;           ///< [m]
  bool areFarApart = false;         ///< partners may be shared, and have normals that agree
  unsigned int mostNeighbours = 0;  ///< of planes that fewer do not tell the normal of
  double roughest = std::numeric_limits<double>::infinity();  ///< of planes that grow [m]
};

/// The number of a point where there is none.
inline constexpr std::uint32_t noPoint = std::numeric_limits<std::uint32_t>::max();

/// A candidate and its partner; numbers are those of the points searched in.
struct Correspondence {
  std::uint32_t i = noPoint, j = noPoint;
  std::uint8_t code = 0;                      ///< of the class, 10 for the ground truth
  vector normalI, normalJ;                    ///< unit
  double shiftI = 0.0, shiftJ = 0.0;          ///< along the beams, towards the sensor [m]
  double roughnessI = 0.0, roughnessJ = 0.0;  ///< of the neighbourhoods; 0 of the ground truth [m]
  double distance = 0.0;  ///< n_I · (Q' − P') of the moved points, as searched [m]
};

/// A candidate when all is known of it.
struct JudgedCandidate {
  Correspondence pair;
  Fate fate;
};

/// How far a point moves along its beam, towards the sensor, to lie on its plane [m]: t of
/// P' = P + t u. 0 for beams that graze the plane (below 3°) and would carry the point far off.
/// @param height  signed distance of the point from the plane [m]
/// @param normal  unit
/// @param beam    from the point to the sensor, of any length
inline double shiftOntoPlane(double height, const vector& normal, const vector& beam) {
  constexpr double grazing = 0.05;
  const double cosine = dot(normal, beam) / lengthOf(beam);
  return std::abs(cosine) >= grazing ? -height / cosine : 0.0;
}

/// The place t along a beam [m].
inline point shifted(const point& place, const vector& beam, double t) {
  return t == 0.0 ? place : place + (t / lengthOf(beam)) * beam;
}

/// A record of the point moved along its beam, in the world and before the scanner alike; as it is
/// when it would not stay before the scanner.
inline Velorn::SphericalBeing shifted(Velorn::SphericalBeing being, double t) {
  const vector reach = being.scannerPosition - point{};
  if (!(lengthOf(reach) > std::abs(t))) return being;
  being.worldPosition = shifted(being.worldPosition, being.directionDelta, t);
  being.scannerPosition = point{} + (1.0 - t / lengthOf(reach)) * reach;
  return being;
}

}  // namespace Velorn::Flights
