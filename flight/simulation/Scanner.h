// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// When and whereto the scanner shoots: a mirror that turns at a constant rate and sends one line
// after the other from left to right.
#pragma once

#include <cstddef>

#include "flight/simulation/FlightPlan.h"

namespace Velorn::Flights::Simulation {

/// One pulse. Its true direction is given by the polar angles of the scanner's axes (down, forward,
/// right): q1 forward of the scan plane, q2 in it, 90° at nadir and less on the right.
struct Pulse {
  double time;    ///< [s of week]
  double q1, q2;  ///< [rad]
};

class Scanner {
 public:
  /// Divides the pulses among the strips by their duration.
  Scanner(const SimulationSettings& options, const FlightPlan& plan);

  std::size_t pulsesIn(const PlannedStrip& strip) const;
  Pulse pulse(const PlannedStrip& strip, std::size_t number) const;

 private:
  double rate_;  // [1/s]
};

}  // namespace Velorn::Flights::Simulation
