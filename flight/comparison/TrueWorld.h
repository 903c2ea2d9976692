// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where the measurements of a synthetic flight lie under its truth.
#pragma once

#include <cstddef>
#include <vector>

#include "flight/comparison/Truth.h"
#include "platform/geomra/PhysicalSpace.h"
#include <velorn/Trajectory.h>

namespace Velorn::Flights::Comparison {

using Points = std::vector<Geomra::PhysicalSpace::point>;

/// World points under the truth, by nothing but the delivered trajectory and the corrections that
/// the truth lists; computed apart from the library's sensor model. Works on all threads.
/// @param strip    place in the truth
/// @param scanner  (down, forward, right), with its noise [m]
/// @param times    one per point [s of week]
/// @return         projected, ellipsoidal height [m]
/// @throws Error for a time that the trajectory does not cover
Points trueWorld(const Truth& truth, const Velorn::Trajectory& trajectory, std::size_t strip,
                 const Points& scanner, const std::vector<double>& times);

}  // namespace Velorn::Flights::Comparison
