// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Georeferencing of a list of strips, in parts.
#pragma once

#include <cstddef>
#include <vector>

#include "flight/strips/Watcher.h"
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>
#include <velorn/flight/Georeference.h>

namespace Velorn::Flights {

/// The places of the strips to work on, ascending.
std::vector<std::size_t> placesOf(const GeoreferencingInput& input);

/// Where the strip goes: "<stem>_SA.kx" in the output folder, or the strip itself.
std::filesystem::path outputOf(const GeoreferencingInput& input, std::size_t place);

/// What can be seen of the files' names alone.
/// @throws Error that names the files or the value
void check(const GeoreferencingInput& input);

/// Refuses strips that the trajectory does not cover, and sections of other times: a model of
/// another flight whose strips have the same names.
/// @param unknown  strips that the model does not know
/// @throws Error that names the strip, and both ranges
void checkTimes(const GeoreferencingInput& input, const Velorn::Trajectory& trajectory,
                const Velorn::SolverParameters& parameters,
                const std::vector<std::filesystem::path>& unknown);

/// @param trajectory  imported, of the input's files
/// @throws as georeference
GeoreferencingReport georeferencedBy(const GeoreferencingInput& input,
                                     const Velorn::Trajectory& trajectory, const Watch& watch);

}  // namespace Velorn::Flights
