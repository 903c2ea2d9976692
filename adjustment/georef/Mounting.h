// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What all measurements of a flight have in common: the twelve global corrections.
#pragma once

#include "adjustment/georef/Rotation.h"

namespace Velorn {

class SolverParameters;

/// Lever arm, misalignment, and the corrections q' = (1 + c) q + o of a measurement's polar form.
template <typename T>
struct Mounting {
  Vector3<T> offsets;       ///< o: [m], [rad], [rad]
  Vector3<T> scales;        ///< c, deviations from one
  Matrix3<T> misalignment;  ///< M = R(m)
  Vector3<T> leverArm;      ///< l, body axes [m]
};

/// @throws std::out_of_range when there are no sections yet
Mounting<double> mountingOf(const SolverParameters& parameters);

/// Misalignment and lever arm alone, all corrections zero; all are zero when there are no sections
/// yet.
Mounting<double> uncorrectedMountingOf(const SolverParameters& parameters);

}  // namespace Velorn
