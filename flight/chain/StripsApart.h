// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How far the strips of a run lie apart as delivered.
#pragma once

#include "flight/chain/RunContext.h"

namespace Velorn::Flights {

/// Looks at the rasters of all pairs of strips that overlap; what an earlier run has found about
/// the same rasters counts.
/// @param spacing  distance of neighbouring points [m]
/// @throws Error that names a raster
ApartReport stripsApart(RunContext& run, double spacing);

/// The pair that lies farthest apart, in words.
std::string textOf(const ApartReport& apart);

}  // namespace Velorn::Flights
