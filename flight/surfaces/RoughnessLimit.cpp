// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/RoughnessLimit.h"

#include <algorithm>

#include "flight/strips/Median.h"

namespace Velorn::Flights {

void RoughnessLimit::add(const Geomra::PhysicalSpace::point& place, float roughness) {
  if (roughness <= most_) cells_[cellOf(place, side)].roughness.push_back(roughness);
}

void RoughnessLimit::settle() {
  constexpr std::size_t fewest = 20;
  constexpr float usual = 2.5F, alwaysFine = 0.01F;
  cells_.forEach([&](Planes& planes) {
    planes.limit = most_;
    if (planes.roughness.size() < fewest) return;
    const float median = upperMedianOf(std::move(planes.roughness));
    planes.roughness = {};
    planes.limit = std::min(most_, std::max(alwaysFine, usual * median));
  });
}

float RoughnessLimit::at(const Geomra::PhysicalSpace::point& place) const {
  const Planes* planes = cells_.find(cellOf(place, side));
  return planes ? planes->limit : most_;
}

}  // namespace Velorn::Flights
