// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The corrections that an adjustment found.
#pragma once

#include <string>
#include <vector>

#include "flight/strips/TimeCover.h"
#include "platform/geomra/PhysicalSpace.h"
#include <velorn/SolverParameters.h>
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// The unknowns of an adjustment and the file names of its strips, in the order of their places.
struct AdjustedModel {
  Velorn::SolverParameters parameters;
  std::vector<std::string> strips;
};

/// @throws Error that names the file and the line
AdjustedModel restored(const ModelFiles& files);

/// What is added to a trajectory.
struct PoseCorrection {
  Geomra::PhysicalSpace::vector position;  ///< easting, northing, height [m]
  Geomra::PhysicalSpace::vector attitude;  ///< roll, pitch, yaw [rad]
};

/// P0 + P1 dt + P2 dt² + P3 dt³, dt the seconds since the start of the time's section, and the same
/// of the attitude; zero where the strip has no section. Beyond the strip its first and last
/// section go on.
/// @param strip  its place
/// @param span   when it was measured [s of week]
/// @param time   [s of that week]
PoseCorrection correctionAt(const Velorn::SolverParameters& parameters, unsigned strip,
                            const TimeSpan& span, double time);

}  // namespace Velorn::Flights
