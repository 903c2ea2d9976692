// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How dense and how noisy the points of a strip are, and what lengths suit them.
//
//     const StripScale scale = scaleOf(points, members);
//     const WorkLengths lengths = lengthsFor(scale);
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

/// What is not known is NaN.
struct StripScale {
  double spacing = std::numeric_limits<double>::quiet_NaN();  ///< as `spacingOf` has it [m]
  double noise = std::numeric_limits<double>::quiet_NaN();    ///< standard deviation of the points
                                                              ///< along the normals of planes [m]
  std::size_t points = 0;                                     ///< of the cloud

  /// That the points cover [m²].
  double area() const { return static_cast<double>(points) * spacing * spacing; }
};

/// Looks at some 500 places in 16 parts of a cloud. The noise is that of the smoother planes among
/// them: each is the smallest one thrice as wide as it is thick, and the roughness that most of the
/// smoother half have in common counts, for vegetation is rough at every size.
/// @param points   those that `members` names are finite
/// @param members  numbers of the points that count
StripScale scaleOf(std::span<const Geomra::PhysicalSpace::point> points,
                   const std::vector<std::uint32_t>& members);

/// Lengths that follow from the points [m]; round ones, lest a strip more or less change them.
struct WorkLengths {
  double cell = 0.1;             ///< smallest of the raster
  double largestCell = 1e3;      ///< that leaves a strip some thousands of them
  double searchRadius = 3.0;     ///< of the matching
  double neighbourRadius = 5.0;  ///< of planes
  double maxRoughness = 0.05;    ///< of planes
};

/// Points 0.3 to 0.5 m apart with a noise of 2 cm get the standard values above; so does what is
/// not known. Planes of denser points are wide in units of the spacing: they need more of them.
WorkLengths lengthsFor(const StripScale& scale);

/// The one scale of several strips: median spacing and noise, and the points of the smallest strip.
StripScale together(std::span<const StripScale> scales);

}  // namespace Velorn::Flights
