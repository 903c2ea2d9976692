// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the scanner measures: beams meet the terrain under the true model, and their ranges and
// angles get offsets, scales and noise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "flight/simulation/Errors.h"
#include "flight/simulation/Scanner.h"
#include "flight/simulation/Terrain.h"

namespace Velorn::Flights::Simulation {

/// One measurement, and what is true about it.
struct Echo {
  double time;          ///< [s of week]
  point scanner;        ///< as measured: (down, forward, right) [m]
  point place;          ///< where the beam met the terrain, projected [m]
  std::uint32_t plane;  ///< number of the surface
  double brightness;    ///< [dB]
};

/// The true state of the flight. It refers to what it is made of, and only reads it.
class Survey {
 public:
  Survey(const SimulationSettings& options, const FlightPlan& plan, const Terrain& terrain,
         const Track& track, const MountingValues& mounting, const Projection& projection);

  /// Time of the first pulse of a strip that gives a point [s of week].
  /// @throws Error when none does
  double firstTime(std::size_t strip) const;

  /// All measurements of a strip in order of time; the same for any number of threads.
  /// @param ask  called now and then on the calling thread; what it throws ends the work
  std::vector<Echo> scan(std::size_t strip, const std::function<void()>& ask) const;

 private:
  std::optional<Echo> measure(std::size_t strip, std::size_t number) const;

  const SimulationSettings& options_;
  const FlightPlan& plan_;
  const Terrain& terrain_;
  const Track& track_;
  const MountingValues& mounting_;
  const Projection& projection_;
  Scanner scanner_;
};

}  // namespace Velorn::Flights::Simulation
