// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// World points of a synthetic flight under its truth, computed anew from its files.
#pragma once

#include "flight/comparison/TrueWorld.h"
#include "platform/geomra/Degree.h"
#include "tests/flight/simulation/SimulatedFlight.h"
#include <velorn/Trajectory.h>

/// The delivered trajectory, as the library reads and interpolates it.
inline Velorn::Trajectory trajectoryIn(const std::filesystem::path& folder) {
  Velorn::Trajectory trajectory({folder / "trajectory.kx"});
  Velorn::Flights::orFail(trajectory.importTrajectory());
  return trajectory;
}

/// World points under the truth, from nothing but the files: delivered trajectory and scanner
/// coordinates, and the corrections that truth.json lists.
inline Velorn::Flights::Comparison::Points trueWorld(const std::filesystem::path& folder,
                                                     std::size_t strip) {
  const auto truth = Velorn::Flights::Comparison::readTruth(folder);
  const OneGridFile file(truth.strips[strip].file);
  return Velorn::Flights::Comparison::trueWorld(
      truth, trajectoryIn(folder), strip,
      file.column<Geomra::PhysicalSpace::point>(Strandel::scannerChartName, "Positions"),
      file.column<double>(Strandel::scannerChartName, "GPSTime"));
}
