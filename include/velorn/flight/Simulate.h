// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A synthetic flight with known truth.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include <velorn/flight/Visibility.h>
#include <velorn/flight/Watch.h>

namespace Velorn::Flights {

struct SimulationSettings {
  std::uint64_t seed = 1;
  std::uint64_t points = 1'000'000;  ///< laser pulses in all; nearly each gives a point
  unsigned int strips = 5;           ///< parallel ones; two crossing strips are added
  double length = 1500.0;            ///< of a parallel strip [m]
  double height = 400.0;             ///< of the parallel strips above the ground [m]
  double speed = 50.0;               ///< along the strips [m/s]
  double terrainScale = 1.0;         ///< of fields, houses, hills and river
  double rangeNoise = 0.02;          ///< standard deviation [m]
  double angleNoise = 0.0005;        ///< standard deviation of both angles [degree]
  bool slowErrors = true;            ///< trajectory errors that vary slowly, beside linear ones
  double errorScale = 1.0;           ///< factor on every injected error; the noise has its own
  /// The one kind of errors injected: offsets, scales, misalignment, lever-arm, position, attitude;
  /// empty for all kinds.
  std::string onlyErrors;
  bool flatControl = false;           ///< ground truth on horizontal planes only
  std::uint32_t epsg = 32632;         ///< projection of the flight, a northern UTM zone
  std::uint64_t correspondences = 0;  ///< to write, at most; 0 for none
};

/// What was made.
struct SimulationReport {
  std::size_t strips = 0, points = 0, patches = 0, planes = 0, correspondences = 0, files = 0;
};

/// Writes the flight into a folder, as docs/simulation.md describes it. The same settings give the
/// same bytes.
/// @param overwrite  replaces a flight that is there already
/// @throws Error: bad settings, a flight in the folder, a file that cannot be written
VELORN_FLIGHT_EXPORT SimulationReport simulate(const std::filesystem::path& folder,
                                               const SimulationSettings& settings, bool overwrite,
                                               const Watch& watch);

}  // namespace Velorn::Flights
