// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Rotations of the sensor model, over any scalar.
#pragma once

#include <Eigen/Core>
#include <cmath>

namespace Velorn {

template <typename T>
using Vector3 = Eigen::Matrix<T, 3, 1>;
template <typename T>
using Matrix3 = Eigen::Matrix<T, 3, 3>;

/// Sine and cosine of one angle.
template <typename T>
struct SineCosine {
  T sine, cosine;
};

template <typename T>
SineCosine<T> sineCosine(const T& angle) {
  using std::cos, std::sin;
  return {sin(angle), cos(angle)};
}

/// R = Rz(z) Ry(y) Rx(x): turns a vector by x about the first axis, then by y about the second,
/// then by z about the third. With roll, pitch and yaw it takes body axes to north, east, down.
template <typename T>
Matrix3<T> rotation(const SineCosine<T>& x, const SineCosine<T>& y, const SineCosine<T>& z) {
  const auto& [sx, cx] = x;
  const auto& [sy, cy] = y;
  const auto& [sz, cz] = z;
  Matrix3<T> r;
  r << cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx,  //
      sz * cy, sz * sy * sx + cz * cx, sz * sy * cx - cz * sx,   //
      -sy, cy * sx, cy * cx;
  return r;
}

/// The same of three angles [rad].
template <typename T>
Matrix3<T> rotation(const Vector3<T>& angles) {
  return rotation(sineCosine(angles[0]), sineCosine(angles[1]), sineCosine(angles[2]));
}

/// C(φ, λ): takes north, east, down at a place to earth-centred axes. The place's latitude φ and
/// longitude λ are given by sine and cosine; the first axis points at longitude 0.
template <typename T>
Matrix3<T> localLevelRotation(const SineCosine<T>& latitude, const SineCosine<T>& longitude) {
  const auto& [sp, cp] = latitude;
  const auto& [sl, cl] = longitude;
  Matrix3<T> c;
  c << -sp * cl, -sl, -cp * cl,  //
      -sp * sl, cl, -cp * sl,    //
      cp, T(0), -sp;
  return c;
}

/// S s: from the scanner's axes (down, forward, right) to the body's (forward, right, down).
template <typename T>
Vector3<T> bodyAxes(const Vector3<T>& s) {
  return {s[1], s[2], s[0]};
}

/// S⁻¹ b: from the body's axes to the scanner's.
template <typename T>
Vector3<T> scannerAxes(const Vector3<T>& b) {
  return {b[2], b[0], b[1]};
}

}  // namespace Velorn
