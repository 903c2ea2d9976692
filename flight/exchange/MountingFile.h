// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The corrections that all strips share, for people and for programs.
#pragma once

#include <string>

#include <velorn/SolverParameters.h>

namespace Velorn::Flights {

/// A line for each value: name, value and unit. Numbers are the shortest that give the same bits.
std::string mountingText(const Velorn::SolverParameters& parameters);

/// The same as one JSON document; units are in the keys.
std::string mountingJson(const Velorn::SolverParameters& parameters);

}  // namespace Velorn::Flights
