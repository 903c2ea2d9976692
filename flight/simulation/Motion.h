// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What air and pilot add to the planned flight: sums of sines in all six degrees of freedom.
#pragma once

#include <array>
#include <cstdint>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights::Simulation {

class Motion {
 public:
  explicit Motion(std::uint64_t seed);

  /// Deviation from the planned place, in the projection [m].
  Geomra::PhysicalSpace::vector position(double time) const {
    return {at(0, time), at(1, time), at(2, time)};
  }

  /// What is added to roll, pitch and yaw [rad].
  Geomra::PhysicalSpace::vector attitude(double time) const {
    return {at(3, time), at(4, time), at(5, time)};
  }

 private:
  struct Sine {
    double amplitude, circular, phase;
  };

  double at(std::size_t channel, double time) const;

  std::array<std::array<Sine, 3>, 6> channels_;
};

}  // namespace Velorn::Flights::Simulation
