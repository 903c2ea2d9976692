// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a user reads of an adjustment: the sums of unknowns that a flight tells, not their parts.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <velorn/SolverParameters.h>
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// Σ factor · unknown, in the unit.
struct ReadableSum {
  std::string name, unit;
  std::map<std::ptrdiff_t, double> factors;  ///< by place in the vector of unknowns
};

/// Roll, pitch and yaw of the scanner in the mean of all sections, with the offsets of its angles,
/// and by how much points below it are lifted.
/// @param strips  in the order of the parameters
/// @param range   at which points are lowered by the corrections of range [m]
std::vector<ReadableSum> readableSums(const Velorn::SolverParameters& parameters,
                                      const std::vector<StripFacts>& strips, double range);

double valueOf(const ReadableSum& sum, const Velorn::SolverParameters& parameters);

}  // namespace Velorn::Flights
