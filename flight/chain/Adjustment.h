// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One adjustment from files: what `velorn adjust` does.
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "flight/records/ModelFiles.h"
#include "platform/kestrum/LoaderProgress.h"
#include <velorn/CeresOptimization.h>
#include <velorn/InputParameter.h>

namespace Velorn::Flights {

struct AdjustmentJob {
  std::vector<std::filesystem::path> strips;  ///< sorted by the library, ids by that order
  std::filesystem::path groundTruth;
  std::vector<std::filesystem::path> trajectories;  ///< containers
  std::filesystem::path correspondences;            ///< folder of correspondence containers
  Velorn::InputParameter configuration;             ///< RootPath: where the output folders are made
  Velorn::AdjustmentSettings settings;
  std::optional<ModelFiles> start;  ///< unknowns to begin with; none: those of the trajectory
};

/// Refuses what would fail later or end the process: files that are missing, names that the list
/// of files cannot hold, two strips of one name, correspondences of a matching that was cut off.
/// @throws Error that names the file
void checkJob(const AdjustmentJob& job);

/// The corrections that all strips share.
struct Globals {
  using Three = std::array<double, 3>;
  Three offsets{};       ///< of range and two angles: [m], [rad], [rad]
  Three scales{};        ///< of the same, as deviations from one
  Three misalignment{};  ///< about the body's axes [rad]
  Three leverArm{};      ///< body axes [m]
};

struct AdjustmentOutcome {
  std::vector<std::string> strips;  ///< file names by id
  Velorn::AdjustmentResult result;
  ModelFiles files;  ///< of the adjusted model; complete only after convergence
  Globals globals;   ///< as the solver left them
};

/// Anything but a convergence leaves unknowns that are not to be used, also where the library
/// counts the run as finished and has written them.
/// @param whenOutOfSteps  what to do then, in the words of the caller's options
/// @throws Error with Error::NoConvergence or Error::SolverFailed and the solver's own words
void requireConvergence(const Velorn::SolverEnd& end, const std::string& whenOutOfSteps);

/// Prepares the output folders, runs the adjustment and writes the exact companion of the parameter
/// file. OpenMP's maximum is raised around the solver, which takes one thread less, and restored.
/// @param progress  told how far the work is
/// @return also for a solver that did not converge
/// @throws Error for everything that keeps the solver from running or its result from being
///         written
AdjustmentOutcome adjust(const AdjustmentJob& job,
                         const std::shared_ptr<Kestrum::LoaderProgress>& progress);

}  // namespace Velorn::Flights
