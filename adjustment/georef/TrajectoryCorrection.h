// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How the corrections of a section change position and attitude of the trajectory, over any scalar.
#pragma once

#include <array>

#include "adjustment/georef/Rotation.h"
#include <velorn/SectionType.h>

namespace Velorn {

/// Where the sensor is and how the aircraft lies.
template <typename T>
struct Pose {
  Vector3<T> position;  ///< p, projected, with height [m]
  Vector3<T> attitude;  ///< a: roll, pitch, yaw [rad]
};

/// The unknowns of one section, as they stand in the vector of unknowns: entry 4 j + m multiplies
/// dt^m of component j.
template <typename T>
struct SectionCorrections {
  std::array<T, 12> position{};  ///< P [m / s^m]
  std::array<T, 12> angles{};    ///< A [rad / s^m]
};

/// Coefficients that the sections of a type have for a component: the powers of dt are those below.
struct UsedPowers {
  int position, angles;
};

constexpr UsedPowers usedPowers(Sec_Type type) {
  switch (type) {
    case Sec_Type::BIAS:
      return {1, 1};
    case Sec_Type::LINEAR:
      return {2, 2};
    case Sec_Type::SPLINE:
      return {4, 4};
    case Sec_Type::HYBRID:
      return {1, 2};
    default:
      return {0, 0};
  }
}

/// The first `powers` terms of k[4 j] + k[4 j + 1] dt + k[4 j + 2] dt² + k[4 j + 3] dt³. A term
/// left out contributes no derivative either.
/// @param coefficients  twelve
template <typename T, typename Known>
T correction(const T* coefficients, int j, int powers, const Known& dt) {
  T sum(0.0);
  for (int m = powers - 1; m >= 0; --m) sum = sum * dt + coefficients[4 * j + m];
  return sum;
}

/// p' and a' of a pose.
/// @param position, angles  twelve coefficients each
/// @param dt                time since the start of the section [s]
template <typename T, typename Known>
Pose<T> correctedPose(const Pose<Known>& pose, const T* position, const T* angles, UsedPowers used,
                      const Known& dt) {
  Pose<T> corrected;
  for (int j = 0; j < 3; ++j) {
    corrected.position[j] = pose.position[j] + correction(position, j, used.position, dt);
    corrected.attitude[j] = pose.attitude[j] + correction(angles, j, used.angles, dt);
  }
  return corrected;
}

}  // namespace Velorn
