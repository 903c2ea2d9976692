// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How the correspondences of the strips lie: over their length, and in which directions they look.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

class SupportTally {
 public:
  explicit SupportTally(std::size_t strips) : strips_(strips) {}

  /// @param time    [s of week]
  /// @param normal  unit
  void add(std::uint32_t strip, double time, const Geomra::PhysicalSpace::vector& normal);

  /// Of all strips, by id.
  std::vector<StripSupport> strips() const;

 private:
  struct Strip {
    std::vector<double> times;
    std::array<double, 3> sums{};  // east², east north, north² of the horizontal normals
  };
  std::vector<Strip> strips_;
};

}  // namespace Velorn::Flights
