// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where the unknowns of a residual lie in the vector of unknowns.
#pragma once

#include <span>
#include <vector>

#include <velorn/SolverParameters.h>

namespace Velorn {

/// The parameter blocks of a residual, in the order of pointToPlaneCostFunction: offsets, scales,
/// misalignment and lever arm, then position and angle corrections of every section. The vector
/// must not change its size as long as the pointers are in use.
/// @throws std::out_of_range, naming it, for a section that has no unknowns
std::vector<double*> parameterBlocks(SolverParameters& parameters,
                                     const std::vector<Section>& sections);

/// All unknowns. The vector must not change its size as long as they are in use.
/// @throws std::out_of_range as parameterBlocks
std::span<const double> unknownsOf(SolverParameters& parameters);

}  // namespace Velorn
