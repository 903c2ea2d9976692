// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How rough a planar neighbourhood may be, by what is usual about it: a neighbourhood across the
// edge of two planes is rougher than both, but may be smoother than a meadow elsewhere.
#pragma once

#include <vector>

#include "flight/surfaces/CellTable.h"

namespace Velorn::Flights {

/// By the planes in cells of 50 m: 2.5 times their median roughness where there are 20 and more,
/// but at least 1 cm.
class RoughnessLimit {
 public:
  /// @param most  everywhere [m]; rougher planes do not count
  explicit RoughnessLimit(float most) : most_(most) {}

  void add(const Geomra::PhysicalSpace::point& place, float roughness);

  /// The largest roughness of a planar neighbourhood there, when all planes have been added [m].
  float at(const Geomra::PhysicalSpace::point& place) const;

  /// To be called once, after the last plane.
  void settle();

 private:
  static constexpr double side = 50.0;  // [m]

  struct Planes {
    std::vector<float> roughness;  // empty when settled
    float limit = 0.0F;
  };
  float most_;
  CellTable<Planes> cells_;
};

}  // namespace Velorn::Flights
