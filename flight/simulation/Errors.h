// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The errors that a synthetic flight is given, in the terms of the sensor model: what is true is
// what is delivered plus a correction.
#pragma once

#include <Eigen/Core>
#include <cstdint>
#include <vector>

#include "flight/simulation/Options.h"
#include "flight/simulation/TrueFlight.h"

namespace Velorn::Flights::Simulation {

/// The twelve numbers that all strips share.
struct MountingValues {
  Eigen::Vector3d offsets = Eigen::Vector3d::Zero();  ///< o of range and angles: [m], [rad], [rad]
  Eigen::Vector3d scales = Eigen::Vector3d::Zero();   ///< c of range and angles
  Eigen::Vector3d misalignment = Eigen::Vector3d::Zero();  ///< about the body's axes [rad]
  Eigen::Vector3d leverArm = Eigen::Vector3d::Zero();      ///< body axes [m]
};

/// What the delivered files say.
MountingValues nominalMounting();

/// What is true: the nominal one plus errors of fixed size, times the factors of the options.
MountingValues trueMounting(const SimulationSettings& options);

/// Corrections of three components, dt the seconds since the strip's first GPS time:
///   constant + linear dt + amplitude sin(2 π dt / period + phase)
struct Correction {
  Eigen::Vector3d constant, linear, amplitude;  ///< [unit], [unit/s], [unit]
  Eigen::Vector3d period, phase;                ///< [s], [rad]

  Eigen::Vector3d at(double dt) const;
};

/// Corrections of the delivered trajectory during one strip.
struct StripErrors {
  double firstTime = 0.0;  ///< where dt = 0 [s of week]
  Correction position;     ///< easting, northing, height [m]
  Correction attitude;     ///< roll, pitch, yaw [rad]

  /// The pose plus so many times the corrections at a time.
  Pose added(const Pose& pose, double time, double factor) const;

  /// Leaves what is constant or linear in time.
  void removeSlowPart() {
    position.amplitude.setZero();
    attitude.amplitude.setZero();
  }
};

/// @param strip      place in the order flown
/// @param firstTime  of the strip's points [s of week]
StripErrors drawnErrors(const SimulationSettings& options, std::uint64_t strip, double firstTime);

/// The trajectory as it is delivered: the true one minus the corrections, at every record. Before
/// and after a strip they fade away while the aircraft flies straight.
Track deliveredTrack(const Track& truth, const std::vector<PlannedStrip>& strips,
                     const std::vector<StripErrors>& errors);

}  // namespace Velorn::Flights::Simulation
