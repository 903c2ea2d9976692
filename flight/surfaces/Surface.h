// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The planes through the neighbourhoods of all points of a strip.
//
//     const Surface surface = surfaceOf(points, clouds, {16, 5.0}, [](std::size_t) {});
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "flight/surfaces/GrowingPlane.h"

namespace Velorn::Flights {

/// The clouds of a strip: the last echoes of all pulses are one surface, those before them others.
enum class Cloud : std::uint8_t { leftOut, last, notLast };

/// Numbers of the points of one cloud, ascending.
std::vector<std::uint32_t> membersOf(std::span<const Cloud> clouds, Cloud cloud);

/// The plane through the neighbourhood of each point.
struct Surface {
  std::vector<vector> normals;   ///< unit, upward; zero where there is no plane
  std::vector<float> roughness;  ///< [m]; NaN where there is no plane
  std::vector<float> distance;   ///< of the point from its plane, along the normal [m]
};

/// Fits planes to the neighbours of each point in its own cloud, tile by tile on all threads. Which
/// of several equally distant neighbours count hangs on the points and their order alone. A plane
/// that had to grow serves the points about its middle, too, if they lie on it: dense clouds have
/// far more points than planes that differ.
/// @param points  those of the two clouds within `farthestPlace`; fewer than 2^32
/// @param clouds  that of each point
/// @param tell    told the number of points done, on the calling thread; what it throws ends the
///                work and is passed on
Surface surfaceOf(std::span<const point> points, std::span<const Cloud> clouds,
                  const Neighbourhood& neighbourhood, const std::function<void(std::size_t)>& tell);

}  // namespace Velorn::Flights
