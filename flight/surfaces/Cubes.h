// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A cloud seen coarsely: how far its points are apart, and one point per cube.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "flight/surfaces/CellTable.h"

namespace Velorn::Flights {

/// Of each cube that holds any of the points that `members` names, the one nearest the cube's
/// centre; the first of equally near ones. The cubes' faces are whole multiples of their side.
/// @param members  ascending numbers of points within `farthestPlace`
/// @param side     [m], at least 1 mm
/// @return numbers of the points, ascending
std::vector<std::uint32_t> onePerCube(std::span<const Geomra::PhysicalSpace::point> points,
                                      std::span<const std::uint32_t> members, double side);

/// How far neighbouring points of a surface are apart [m]: the side of the square that each of the
/// 16 nearest points would have of their disc, the median over some 2000 points. Unlike the
/// distance of the nearest point it knows nothing of how close the points of one scan line are.
/// NaN when fewer than 16 points are within the radius of most.
/// @param members  numbers of points within `farthestPlace`
/// @param radius   [m]
double spacingOf(std::span<const Geomra::PhysicalSpace::point> points,
                 const std::vector<std::uint32_t>& members, double radius);

}  // namespace Velorn::Flights
