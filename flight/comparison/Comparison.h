// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The result of a run on a synthetic flight, against the truth.
//
//     const Comparison::Report report = Comparison::compare(truth, result, adjusted, progress);
//     fmt::print("{}", Comparison::textOf(report));
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "flight/comparison/Globals.h"
#include "flight/comparison/PairFit.h"
#include "flight/comparison/WorldErrors.h"
#include "flight/records/RunFolder.h"
#include "platform/kestrum/LoaderProgress.h"

namespace Velorn::Flights::Comparison {

/// One surface or strip.
struct ErrorRow {
  std::string name;
  ErrorFigures before, after;  ///< of the delivered and of the adjusted points
};

/// Points of the strips compared: the same noisy measurement under the one model and under the true
/// one, so that the noise plays no part.
struct WorldReport {
  std::vector<ErrorRow> kinds;   ///< all, roof, slope, bed, flat
  std::vector<ErrorRow> strips;  ///< that were adjusted, in the order of the truth
  Geomra::PhysicalSpace::vector shiftBefore, shiftAfter;  ///< mean errors: east, north, height [m]
  std::size_t notFinite = 0;                              ///< adjusted points left out
  std::vector<std::string> missing;                       ///< strips of the flight without a result
};

struct Report {
  WorldReport world;
  std::optional<ModelFiles> files;   ///< empty: the run has none, and there are no globals
  std::vector<std::string> unknown;  ///< strips that the adjusted model does not know
  std::vector<GlobalFigure> globals, sums;
  FitFigures pairs, groundTruth;
};

/// @param truth     folder of the synthetic flight
/// @param result    root folder of the run
/// @param adjusted  folder of the adjusted strips, <strip>_SA.kx
/// @throws Error for folders that are not what they should be
Report compare(const std::filesystem::path& truth, const std::filesystem::path& result,
               const std::filesystem::path& adjusted, Kestrum::LoaderProgress& progress);

/// Tables for people.
std::string textOf(const Report& report);

/// The same for programs, as docs/commands.md describes it.
std::string jsonOf(const Report& report);

}  // namespace Velorn::Flights::Comparison
