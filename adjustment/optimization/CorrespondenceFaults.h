// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What must not reach the solver: it would read beyond the unknowns, or end the process.
#pragma once

#include <string>

#include "adjustment/optimization/CorrespondenceFolder.h"
#include <velorn/SolverParameters.h>

namespace Velorn {

/// Why a block cannot be used with the strips of a model, by its name, its flag and its lengths:
/// a strip that is not there, sides of unequal length.
/// @return empty, or a text that names the file and the number
std::string faultOfBlock(const CorrespondenceFile& file, const CorrespondenceBlock& block,
                         const SolverParameters& parameters);

/// Why one correspondence cannot be used: a first point in no section, a class without a place
/// in the per-class lists, a coordinate, time or normal that is not finite, a zero scanner vector,
/// two points in one section, whose unknowns a residual takes once only. Of a point of the ground
/// truth only the world position counts.
/// @param classes  classes of the configuration
/// @return empty, or a text that names the file, the index and the value
std::string faultOfCorrespondence(const CorrespondenceFile& file, const CorrespondenceBlock& block,
                                  std::uint32_t index, const SolverParameters& parameters,
                                  unsigned int classes);

/// Whether a correspondence says nothing: without a direction every residual is zero.
bool isWithoutNormal(const SphericalBeing& first);

}  // namespace Velorn
