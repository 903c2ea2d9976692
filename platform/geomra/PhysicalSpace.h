// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Points and vectors of physical space: three contiguous doubles each, in metres unless the owner
// says otherwise. The two are distinct types, so that "point + point" does not compile; a column of
// N is N x 3 doubles in memory.
#pragma once

#include <cmath>
#include <type_traits>

#include "platform/Visibility.h"

namespace Geomra::PhysicalSpace {

/// Difference of two points, a direction, or three angles; the frame and unit are the owner's.
struct VELORN_PLATFORM_EXPORT vector {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  friend constexpr bool operator==(const vector&, const vector&) = default;
  friend constexpr vector operator+(const vector& a, const vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
  }
  friend constexpr vector operator-(const vector& a, const vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
  friend constexpr vector operator*(double factor, const vector& v) {
    return {factor * v.x, factor * v.y, factor * v.z};
  }
};

/// A place; the frame and unit are the owner's.
struct VELORN_PLATFORM_EXPORT point {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  friend constexpr bool operator==(const point&, const point&) = default;
  friend constexpr vector operator-(const point& a, const point& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
  friend constexpr point operator+(const point& a, const vector& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
  }
  friend constexpr point operator-(const point& a, const vector& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
};

/// Whether all three are numbers, none of them infinite.
inline bool isFinite(const point& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}
inline bool isFinite(const vector& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// Scalar product.
constexpr double dot(const vector& a, const vector& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline double lengthOf(const vector& v) {
  return std::sqrt(dot(v, v));
}

// A column of these goes to disk and back in one call.
static_assert(sizeof(point) == 3 * sizeof(double) && std::is_trivially_copyable_v<point>);
static_assert(sizeof(vector) == 3 * sizeof(double) && std::is_trivially_copyable_v<vector>);

}  // namespace Geomra::PhysicalSpace
