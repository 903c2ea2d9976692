// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The corrections that all strips share, against the truth.
#pragma once

#include <string>
#include <vector>

#include "flight/comparison/ScanShape.h"
#include "flight/comparison/Truth.h"
#include <velorn/SolverParameters.h>
#include <velorn/flight/Compare.h>

namespace Velorn::Flights::Comparison {

/// Offsets and scales of range and angles, misalignment and lever arm: twelve.
std::vector<GlobalFigure> globalsOf(const Truth& truth, const Velorn::SolverParameters& parameters);

/// Sums of angles that move the points alike, so that only they can be found. About each axis of
/// the body: the misalignment; the mean correction of the trajectory's angle, over all strips and
/// their time; and, with q1 = a + b r and the mean depth D (see ScanShape) and q2 = 90° at nadir,
///   roll: o2 + c2 90° − l_right / D    pitch: o1 + c1 a + l_forward / D    yaw: −c1 b
/// @param parameters  its strips are in the order of the truth's
std::vector<GlobalFigure> separableSums(const Truth& truth, const ScanShape& shape,
                                        const Velorn::SolverParameters& parameters);

}  // namespace Velorn::Flights::Comparison
