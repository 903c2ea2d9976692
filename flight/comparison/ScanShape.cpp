// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/comparison/ScanShape.h"

#include <cmath>

namespace Velorn::Flights::Comparison {

void ScanShape::add(const std::vector<Geomra::PhysicalSpace::point>& scanner) {
  for (const auto& s : scanner) {
    const double range = std::hypot(s.x, s.y, s.z);
    if (!(range > 0.0) || !std::isfinite(range)) continue;
    const double right = s.z / range, forward = std::asin(s.y / range);
    number_ += 1.0;
    sumR_ += right;
    sumQ_ += forward;
    sumRR_ += right * right;
    sumRQ_ += right * forward;
    sumDepth_ += s.x;
  }
}

double ScanShape::slope() const {
  const double r = meanOf(sumR_), variance = meanOf(sumRR_) - r * r;
  return variance > 0.0 ? (meanOf(sumRQ_) - r * meanOf(sumQ_)) / variance : 0.0;
}

double ScanShape::atNadir() const {
  return meanOf(sumQ_) - slope() * meanOf(sumR_);
}

}  // namespace Velorn::Flights::Comparison
