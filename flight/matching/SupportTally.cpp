// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/SupportTally.h"

#include <algorithm>
#include <cmath>

#include "platform/geomra/Degree.h"
#include "platform/orvek/Figures.h"

namespace Velorn::Flights {
namespace {

using Geomra::degree;

/// Of the symmetric matrix [a b; b c].
double leastEigenvalue(double a, double b, double c) {
  return std::max(0.0, 0.5 * (a + c) - std::hypot(0.5 * (a - c), b));
}

}  // namespace

void SupportTally::add(std::uint32_t strip, double time,
                       const Geomra::PhysicalSpace::vector& normal) {
  Strip& one = strips_.at(strip);
  one.times.push_back(time);
  if (std::abs(normal.z) > std::cos(10.0 * degree)) return;
  one.sums[0] += normal.x * normal.x;
  one.sums[1] += normal.x * normal.y;
  one.sums[2] += normal.y * normal.y;
}

std::vector<StripSupport> SupportTally::strips() const {
  std::vector<StripSupport> all;
  for (std::uint32_t id = 0; id < strips_.size(); ++id) {
    const Strip& one = strips_[id];
    auto times = one.times;
    const double first = OrvekStatistic::quantileInPlace(times, 0.05),
                 last = OrvekStatistic::quantileInPlace(times, 0.95);
    all.push_back(
        {id, times.size(), first, last, leastEigenvalue(one.sums[0], one.sums[1], one.sums[2])});
  }
  return all;
}

}  // namespace Velorn::Flights
