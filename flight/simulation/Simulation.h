// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A synthetic flight with known truth, from its options to its files.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>

#include "flight/simulation/Options.h"

namespace Velorn::Flights::Simulation {

/// What was made.
struct Summary {
  std::size_t strips = 0, points = 0, patches = 0, planes = 0, correspondences = 0, files = 0;
};

/// Writes the flight into a folder, as docs/simulation.md describes it. The same options give the
/// same bytes.
/// @param overwrite  replaces a flight that is there already
/// @param tell       told each strip as it is written, and the correspondences
/// @throws Error: bad options, a flight in the folder, a file that cannot be written
Summary simulate(const std::filesystem::path& folder, const Options& options, bool overwrite,
                 const std::function<void(const std::string&)>& tell);

}  // namespace Velorn::Flights::Simulation
