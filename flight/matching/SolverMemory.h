// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How many correspondences there are at most, and whether an adjustment has room for them. Their
// number is a setting, and never what happens to be free.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>

#include <velorn/CeresOptimization.h>
#include <velorn/flight/Settings.h>

namespace Velorn::Flights {

/// What the solver holds at its peak, per correspondence.
constexpr std::size_t bytesOfSolver(Velorn::Evaluation evaluation) {
  return evaluation == Velorn::Evaluation::Reference ? 3000 : 400;
}

/// @param strips  number of strips
std::size_t maxCorrespondencesOf(const MatchSettings& settings, std::size_t strips);

/// @param available  [byte]; nothing: not known, all is well
/// @throws Error of BadSettings, with the number that fits
void requireSolverMemory(const MatchSettings& settings, std::size_t strips,
                         Velorn::Evaluation evaluation, std::optional<std::uint64_t> available);

/// The same for blocks that are there already; their correspondences are counted by the files'
/// sizes.
/// @param blocks  their folder, which is named then
void requireSolverMemory(const std::filesystem::path& blocks, Velorn::Evaluation evaluation,
                         std::optional<std::uint64_t> available);

}  // namespace Velorn::Flights
