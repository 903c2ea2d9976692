// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which points of a strip an expression selects.
#pragma once

#include <cstdint>
#include <vector>

#include "flight/strips/GridFile.h"
#include "flight/surfaces/Selection.h"

namespace Velorn::Flights {

/// Looks for the fields of an expression: scalars of the world chart.
/// @throws Error that names the strip, the field, and the fields there are
void checkNames(const Selection& selection, const GridFile& strip);

/// Makes the codes of surface points that are not selected those of no terrain.
/// @return their number
std::size_t deselect(Selection& selection, const GridFile& strip, std::vector<std::uint8_t>& codes);

}  // namespace Velorn::Flights
