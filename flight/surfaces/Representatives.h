// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One point per cell: the one nearest the centroid of the cell's points.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "flight/surfaces/CellTable.h"

namespace Velorn::Flights {

using Geomra::PhysicalSpace::point;

/// Of each square cell in plan that holds any of the points that `members` names, the one nearest
/// the centroid of these, in plan; the first of equally near ones. The cells' lines are whole
/// multiples of their side, so that they are the same in all strips.
/// @param members  ascending numbers of points within `farthestPlace`
/// @param side     [m]
/// @return numbers of the points, ascending
std::vector<std::uint32_t> representatives(std::span<const point> points,
                                           std::span<const std::uint32_t> members, double side);

}  // namespace Velorn::Flights
