// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/statistics/PointMeasures.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Velorn {
namespace {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

double largestOf(const vector& v) {
  return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
}

/// Divided by its largest component before it is squared.
vector unitVector(const vector& v) {
  const double largest = largestOf(v);
  const vector scaled{v.x / largest, v.y / largest, v.z / largest};
  return 1.0 / std::sqrt(dot(scaled, scaled)) * scaled;
}

/// A conversion beyond the range of float is undefined.
float toFloat(double value) {
  if (std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max()) ||
      std::isnan(value)) {
    return static_cast<float>(value);
  }
  return std::copysign(std::numeric_limits<float>::infinity(), value < 0.0 ? -1.0F : 1.0F);
}

}  // namespace

double verticalDistance(const point& a, const point& b) {
  return std::abs(b.z - a.z);
}

double horizontalDistance(const point& a, const point& b) {
  const double dx = std::abs(b.x - a.x), dy = std::abs(b.y - a.y);
  const double largest = std::max(dx, dy);
  if (largest == 0.0) return dx + dy;  // zero, or NaN that the maximum did not see
  const double x = dx / largest, y = dy / largest;
  return largest * std::sqrt(x * x + y * y);
}

float pointToPlane(const point& first, const point& second, const vector& normal) {
  if (largestOf(normal) == 0.0) return std::numeric_limits<float>::quiet_NaN();
  return toFloat(dot(first - second, unitVector(normal)));
}

}  // namespace Velorn
