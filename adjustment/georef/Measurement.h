// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The polar form of a laser measurement and its corrections, over any scalar.
#pragma once

#include <cmath>

#include "adjustment/georef/Rotation.h"

namespace Velorn {

/// q of s: range r = sqrt(s0² + s1² + s2²), arcsin(s1 / r), atan2(s0, s2). The arcsine is evaluated
/// as an arctangent, which keeps its digits near ±90°.
template <typename T>
Vector3<T> polarForm(const Vector3<T>& s) {
  using std::atan2, std::sqrt;
  const T inPlane = sqrt(s[0] * s[0] + s[2] * s[2]);
  return {sqrt(inPlane * inPlane + s[1] * s[1]), atan2(s[1], inPlane), atan2(s[0], s[2])};
}

/// s of q: s0 = q0 cos q1 sin q2, s1 = q0 sin q1, s2 = q0 cos q1 cos q2.
/// @param range          q0
/// @param first, second  sine and cosine of q1 and q2
template <typename T>
Vector3<T> cartesianForm(const T& range, const SineCosine<T>& first, const SineCosine<T>& second) {
  return {range * first.cosine * second.sine, range * first.sine,
          range * first.cosine * second.cosine};
}

/// The same of the angles themselves.
template <typename T>
Vector3<T> cartesianForm(const Vector3<T>& q) {
  return cartesianForm(q[0], sineCosine(q[1]), sineCosine(q[2]));
}

/// q' = (1 + c) q + o.
/// @param q  polar form; it holds no unknown
template <typename T, typename Known>
Vector3<T> correctedPolarForm(const Vector3<Known>& q, const Vector3<T>& offsets,
                              const Vector3<T>& scales) {
  Vector3<T> corrected;
  for (int i = 0; i < 3; ++i) corrected[i] = (1.0 + scales[i]) * q[i] + offsets[i];
  return corrected;
}

}  // namespace Velorn
