// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The result of a run on a synthetic flight, against the truth.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include <velorn/flight/Reports.h>
#include <velorn/flight/Visibility.h>
#include <velorn/flight/Watch.h>

namespace Velorn::Flights {

/// Horizontal and vertical [m].
struct TwoParts {
  double horizontal = unknownFigure, vertical = unknownFigure;
};

struct ErrorFigures {
  std::size_t points = 0;
  TwoParts rms, median;      ///< of lengths; NaN without points
  TwoParts rmsWithoutShift;  ///< when the mean error of all points of the flight is taken off
};

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

/// One number: true, as the delivered files say, and as an adjustment found it.
struct GlobalFigure {
  std::string name, unit;
  double real = 0.0, nominal = 0.0, estimated = 0.0;  ///< [unit]
};

/// Root mean squares of distances along the normal [m]; NaN where there is none.
struct FitFigures {
  std::size_t correspondences = 0;
  std::size_t notFound = 0;  ///< a point is in none of the strips compared; left out
  double rawBefore = unknownFigure, rawAfter = unknownFigure, rawTrue = unknownFigure;
  double blockBefore = unknownFigure, blockAfter = unknownFigure, blockTrue = unknownFigure;
  double floor = unknownFigure;  ///< what the noise alone makes of the raw points
};

struct ComparisonReport {
  WorldReport world;
  std::optional<ModelFiles> files;   ///< empty: the run has none, and there are no globals
  std::vector<std::string> unknown;  ///< strips that the adjusted model does not know
  std::vector<GlobalFigure> globals, sums;
  FitFigures pairs, groundTruth;
};

/// @param truth     folder of the synthetic flight
/// @param result    root folder of the run
/// @param adjusted  folder of the adjusted strips, <strip>_SA.kx; empty: the run's
/// @throws Error for folders that are not what they should be
VELORN_FLIGHT_EXPORT ComparisonReport compare(const std::filesystem::path& truth,
                                              const std::filesystem::path& result,
                                              const std::filesystem::path& adjusted,
                                              const Watch& watch);

/// Tables for people.
VELORN_FLIGHT_EXPORT std::string textOf(const ComparisonReport& report);

/// The same for programs: a JSON document, as docs/commands.md describes it.
VELORN_FLIGHT_EXPORT std::string documentOf(const ComparisonReport& report);

}  // namespace Velorn::Flights
