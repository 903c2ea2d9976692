// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What is known of mounting, trajectory and measurements before an adjustment, and what the
// adjustment has to say of it.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace Velorn {

/// What of mounting and trajectory has a common uncertainty.
enum class PriorGroup : std::uint8_t {
  Offsets,
  Scales,
  Misalignment,
  LeverArm,
  PlanPosition,
  Height,
  RollAndPitch,
  Yaw
};
inline constexpr std::size_t priorGroups = 8;
using PriorFactors = std::array<double, priorGroups>;  ///< by group

/// Standard deviations of errors that are expected, and the values they are expected about. The
/// errors of the trajectory are a stationary Gauss-Markov process for each component, with
/// covariance σ² exp(−|Δt| / Tc). An infinite σ says that nothing is known.
struct APrioriKnowledge {
  static constexpr double unknown = std::numeric_limits<double>::infinity();

  std::array<double, 3> position{unknown, unknown, unknown};  ///< east, north, height [m]
  std::array<double, 3> attitude{unknown, unknown, unknown};  ///< roll, pitch, yaw [rad]
  double positionTime = 60.0;                                 ///< Tc of the position [s]
  double attitudeTime = 120.0;                                ///< Tc of the attitude [s]
  double positionStep = 0.001;      ///< σ of a step between sections of a strip [m]
  double attitudeStep = 1.7453e-7;  ///< the same of the attitude [rad]

  std::array<double, 3> offsets{unknown, unknown, unknown};       ///< of range [m], angles [rad]
  std::array<double, 3> scales{unknown, unknown, unknown};        ///< of range and angles [1]
  std::array<double, 3> misalignment{unknown, unknown, unknown};  ///< roll, pitch, yaw [rad]
  std::array<double, 3> leverArm{unknown, unknown, unknown};      ///< [m]

  std::array<double, 3> deliveredMisalignment{};  ///< [rad]
  std::array<double, 3> deliveredLeverArm{};      ///< [m]

  double pairs = 0.02;    ///< σ of the distances of corresponding planes [m], a first guess
  double control = 0.02;  ///< the same with the ground truth [m]
};

/// How well a group of observations, or of what is known before, agrees with all others.
struct GroupDeviation {
  double apriori = 0.0;       ///< σ that was expected; of a prior group 1
  double sigma = 0.0;         ///< σ that it has; of a prior group a factor of what was expected
  std::size_t count = 0;      ///< observations, or degrees of freedom of a prior group
  double designEffect = 1.0;  ///< how many of them count as one
  double redundancy = 0.0;    ///< what the others leave to be compared
  bool isEstimated = false;   ///< false: too little redundancy, σ is as expected
};

/// Standard deviations as an adjustment has found them. Empty where nothing was known before.
struct GroupDeviations {
  std::vector<GroupDeviation> classes;  ///< correspondences by TerrainType [m]
  std::array<GroupDeviation, priorGroups> priors{};
  int rounds = 0;          ///< of adjusting and weighing anew
  bool isSettled = false;  ///< the last of them changed no σ by more than a twentieth
};

}  // namespace Velorn
