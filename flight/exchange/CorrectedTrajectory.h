// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A trajectory with the corrections of an adjustment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "flight/exchange/AdjustedModel.h"
#include "flight/formats/Sbet.h"
#include "flight/strips/TimeCover.h"
#include <velorn/Trajectory.h>

namespace Velorn::Flights {

/// When a strip was measured.
struct MeasuredStrip {
  std::filesystem::path container;
  unsigned place = 0;  ///< in the adjusted model
  std::int64_t week = 0;
  TimeSpan span;  ///< [s of week]
};

/// The containers whose strips are in the model, by file name, with or without the _SA of
/// georeferencing.
/// @param unknown  receives the others
/// @throws Error that names the container: it has no times or no week; another one has its strip
std::vector<MeasuredStrip> measuredStrips(const std::vector<std::filesystem::path>& containers,
                                          const AdjustedModel& model,
                                          std::vector<std::filesystem::path>& unknown);

struct CorrectedTrajectory {
  std::vector<SbetRecord> records;  ///< times go on beyond the end of the first week
  std::int64_t week = 0;            ///< of the first record
  std::size_t corrected = 0;        ///< by anything but zeros
  std::size_t contested = 0;  ///< records of two strips; the correction of the one listed first
                              ///< counts
};

/// All records of the trajectory, those measured with a strip corrected: p' = p + P in the
/// projection, a' = a + A. The record before a strip and the one behind it are
/// corrected by its first and last section, so that all its points lie between corrected records.
/// All others stay as they are.
/// @throws Error: a strip that the trajectory does not cover; weeks that do not follow each
///         other, or have fewer than three records
CorrectedTrajectory correctedTrajectory(const Velorn::Trajectory& trajectory,
                                        const Velorn::SolverParameters& parameters,
                                        const std::vector<MeasuredStrip>& strips);

}  // namespace Velorn::Flights
