// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One adjustment from files: blocks of correspondences in a folder, to the unknowns of all strips.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include <velorn/CeresOptimization.h>
#include <velorn/InputParameter.h>
#include <velorn/flight/Reports.h>
#include <velorn/flight/Visibility.h>
#include <velorn/flight/Watch.h>

namespace Velorn::Flights {

struct AdjustmentInput {
  std::vector<std::filesystem::path> strips;  ///< sorted by the library, ids by that order
  std::filesystem::path groundTruth;
  std::vector<std::filesystem::path> trajectories;  ///< containers
  std::filesystem::path correspondences;            ///< folder of correspondence containers
  Velorn::InputParameter configuration;             ///< RootPath: where the output folders are made
  Velorn::AdjustmentSettings settings;
  /// Of the strips, and how far a typical point lies from the scanner [m]: what the sums that a
  /// user reads are made of. Only with knowledge.
  /// @{
  std::vector<StripFacts> facts;
  double typicalRange = 0.0;
  /// @}
  std::optional<ModelFiles> start;  ///< unknowns to begin with; none: those of the trajectory
  unsigned int threads = 0;         ///< 0: as many as there are cores
  bool mayBeScarce = false;         ///< the result is but a start: no number is too small
  bool repeatable = false;          ///< the solver takes one thread: the same bytes every time
};

/// Prepares the output folders, runs the adjustment and writes the exact companion of the parameter
/// file. The solver takes all cores; OpenMP's maximum is as before afterwards.
/// @return also for a solver that did not converge: see requireConvergence
/// @throws Error that names the file, for everything that keeps the solver from running or its
///         result from being written: files that are missing, names that the list of files cannot
///         hold, two strips of one name, correspondences of a matching that was cut off; fewer
///         than five correspondences for each estimated unknown, or than thirty
VELORN_FLIGHT_EXPORT AdjustmentReport adjust(const AdjustmentInput& input, const Watch& watch);

/// Anything but a convergence leaves unknowns that are not to be used, also where the library
/// counts the run as finished and has written them.
/// @param whenOutOfSteps  what to do then, in the words of the caller's options
/// @throws Error with NoConvergence or SolverFailed and the solver's own words
VELORN_FLIGHT_EXPORT void requireConvergence(const Velorn::SolverEnd& end,
                                             const std::string& whenOutOfSteps);

}  // namespace Velorn::Flights
