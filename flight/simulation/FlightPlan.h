// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where the aircraft is meant to be at a time: parallel strips in opposite directions, two crossing
// strips at another height, and turns between them.
#pragma once

#include <array>
#include <vector>

#include "flight/simulation/Options.h"
#include "flight/simulation/Terrain.h"

namespace Velorn::Flights::Simulation {

constexpr double halfSwathDegrees = 25.0;  ///< of the scanner, to either side

/// A straight line flown while the scanner measures.
struct PlannedStrip {
  point start;                             ///< [m]
  vector direction;                        ///< unit, horizontal, in the projection
  double length;                           ///< [m]
  double heightAboveGround;                ///< above Terrain::level [m]
  double speed;                            ///< [m/s]
  double firstTime = 0.0, lastTime = 0.0;  ///< [s of week]

  double duration() const { return length / speed; }
  point at(double metres) const { return start + metres * direction; }
};

/// Place, velocity and acceleration in the projection: [m], [m/s], [m/s²].
struct Kinematics {
  point position;
  vector velocity, acceleration;
};

class FlightPlan {
 public:
  /// Straight flight before and after every strip [s].
  static constexpr double lead = 5.0;
  static constexpr double beginning = 302400.0;  ///< [s of week]
  static constexpr unsigned int week = 2318;     ///< GPS week

  explicit FlightPlan(const SimulationSettings& options);

  const std::vector<PlannedStrip>& strips() const { return strips_; }
  double lastTime() const { return legs_.back().end; }  ///< of the flight [s of week]
  Kinematics at(double time) const;

  /// True when a place lies well inside the swath of a strip.
  bool covers(double easting, double northing) const;

  /// All that any beam can reach, with a margin for the aircraft's motion.
  Extent reach() const;

 private:
  /// A piece of the way: place = sum of c[k] s^k, s the seconds since its begin.
  struct Leg {
    double begin, end;
    std::array<vector, 6> c;
  };

  void addStrips(const SimulationSettings& options);
  void addStraight(PlannedStrip& strip);
  void addTurn(const PlannedStrip& from, const PlannedStrip& to);

  std::vector<PlannedStrip> strips_;
  std::vector<Leg> legs_;
};

}  // namespace Velorn::Flights::Simulation
