// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the matching of a round found and left out, as a file to look at.
//
//     writeCorrespondences(settings, {.round = 2, .output = "round_2.las"}, watch);
#pragma once

#include <array>
#include <cstddef>
#include <filesystem>

#include <velorn/flight/CorrespondenceRow.h>
#include <velorn/flight/Settings.h>
#include <velorn/flight/Visibility.h>
#include <velorn/flight/Watch.h>

namespace Velorn::Flights {

struct CorrespondenceWish {
  unsigned int round = 0;  ///< 0: the last one
  /// Ends in .las or .csv; empty: correspondences_round<N>.las in the root folder.
  std::filesystem::path output;
  bool overwrite = false;
};

struct WrittenCorrespondences {
  std::filesystem::path file;
  unsigned int round = 0;
  bool isAdjusted = false;  ///< the round led to a model, so that distances after it are known
  std::array<std::size_t, fateCount> counts{};  ///< of rows, by fate
};

/// Matches a round of the run in the root folder once more, from the model that it began with, and
/// writes all its candidates, pair by pair. Nothing of the run changes. Rounds of a run that failed
/// or was interrupted can be looked at, too.
/// @param settings  those of the run; its steps, and the limit of the number of rounds, do not
/// count
/// @throws Error that names the file: no run, a run that is going on, other settings or inputs than
///         the run's, no such round, a file that exists or cannot be written
VELORN_FLIGHT_EXPORT WrittenCorrespondences writeCorrespondences(FlightSettings settings,
                                                                 const CorrespondenceWish& wish,
                                                                 const Watch& watch);

}  // namespace Velorn::Flights
