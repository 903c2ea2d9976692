// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What all measurements of a flight have in common: the twelve global corrections.
#pragma once

#include "georef/Rotation.h"

namespace Velorn {

class SolverParameters;

/// Lever arm, misalignment, and the corrections q' = (1 + c) q + o of a measurement's polar form.
struct Mounting {
  Vector3<double> offsets = Vector3<double>::Zero();           ///< o: [m], [rad], [rad]
  Vector3<double> scales = Vector3<double>::Zero();            ///< c, deviations from one
  Vector3<double> leverArm = Vector3<double>::Zero();          ///< l, body axes [m]
  Matrix3<double> misalignment = Matrix3<double>::Identity();  ///< M = R(m)
};

/// @throws std::out_of_range when there are no sections yet
Mounting mountingOf(const SolverParameters& parameters);

}  // namespace Velorn
