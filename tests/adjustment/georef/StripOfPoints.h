// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A flight of one strip in memory: trajectory, parameters and measurements, and what the exact twin
// makes of them.
#pragma once

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

#include "tests/adjustment/georef/Measurements.h"
#include "tests/adjustment/georef/RestoredModel.h"
#include "tests/adjustment/trajectory/TrajectoryFile.h"
#include <velorn/Georeferencing.h>
#include <velorn/Trajectory.h>

inline constexpr unsigned week = 2318;

/// Where and how a strip is flown.
struct Route {
  double easting = 600000, northing = 5250000, height = 800;  // of its start [m]
  double speed = 60;                                          // [m/s]
  double rate = 200;                                          // of the trajectory [Hz]
  double start = 400000, seconds = 20;                        // [s of week]
  bool isThereAndBack = false;                                // turns round in the middle

  /// How far along it the aircraft is [m].
  double along(double second) const {
    return speed * (isThereAndBack ? std::min(second, seconds - second) : second);
  }
};

inline Velorn::Trajectory trajectoryOf(const Route& route) {
  std::vector<Record> records;
  for (int i = 0; i <= static_cast<int>(route.seconds * route.rate); ++i) {
    const double s = i / route.rate;
    records.push_back({route.start + s,
                       {route.easting + 0.8 * route.along(s) + std::sin(s),
                        route.northing + 0.6 * route.along(s), route.height + std::cos(0.7 * s)},
                       {5 * std::sin(0.9 * s), 3 + std::sin(1.3 * s), 413 + 2 * std::cos(s)}});
  }
  const TemporaryFolder folder;
  Velorn::Trajectory trajectory({TrajectoryFile({records}).save(folder / "trajectory.kx")});
  if (!trajectory.importTrajectory().empty()) throw std::runtime_error("trajectory");
  return trajectory;
}

/// Corrections of all kinds for sections of a strip, with terms of all powers.
inline std::vector<double> someCorrections(std::size_t sections, bool scaledAngles = true) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> share(-1, 1);
  std::vector<double> values(24 * sections + 12);
  for (std::size_t i = 0; i < 24 * sections; ++i) {
    values[i] = (i % 24 < 12 ? 0.3 : 1e-3) * share(random) * std::pow(0.1, i % 4);
  }
  const double sizes[] = {0.1, 2e-3, 2e-3, 1e-4, 1e-4, 1e-4, 0.05, 0.05, 0.05, 1, 1, 1};
  for (std::size_t i = 0; i < 12; ++i) values[24 * sections + i] = sizes[i] * share(random);
  if (!scaledAngles) values[24 * sections + 4] = values[24 * sections + 5] = 0;
  return values;
}

/// Measurements in order of time, and their results.
struct Points {
  std::vector<Geomra::PhysicalSpace::point> scanner, world;
  std::vector<Geomra::PhysicalSpace::vector> directions;
  std::vector<double> times;

  explicit Points(std::size_t count)
      : scanner(count), world(count), directions(count), times(count) {}

  /// Over the whole swath of a route.
  Points(const Route& route, std::size_t count) : Points(count) {
    std::mt19937_64 random(12);
    std::uniform_real_distribution<double> range(0.7, 1.1), forward(-0.02, 0.02), right(-0.6, 0.6);
    for (std::size_t i = 0; i < count; ++i) {
      times[i] =
          route.start + route.seconds * (static_cast<double>(i) + 0.5) / static_cast<double>(count);
      const auto s = beam(route.height * range(random), forward(random), right(random));
      scanner[i] = {s[0], s[1], s[2]};
    }
  }

  std::string georeference(const Velorn::SolverParameters& parameters,
                           const Velorn::Trajectory& trajectory, double length = 0,
                           bool report = false) {
    return Velorn::scanner2world(parameters, trajectory, scanner, times, week, 0, world, directions,
                                 length, report);
  }
};

/// A measurement between two records and its unknowns, for the exact twin.
struct ExactCase {
  Exact::Measurement measurement;
  Exact::Unknowns unknowns{};

  ExactCase(const Velorn::Trajectory& trajectory, const std::vector<int>& starts,
            const std::vector<double>& values, const Geomra::PhysicalSpace::point& scanner,
            double t) {
    using Exact::Real;
    const auto [a, b] = trajectory.recordsAbout(t, week).value();
    const Real f = (Real(t) - a.time) / (Real(b.time) - a.time);
    const auto between = [f](Real from, Real to) { return from + f * (to - from); };
    const auto &p = a.position, &q = b.position;
    const auto &r = a.attitude, &s = b.attitude;
    std::size_t section = 0;
    while (section + 1 < starts.size() && starts[section + 1] <= t) ++section;
    measurement = {{scanner.x, scanner.y, scanner.z},
                   {between(p.x, q.x), between(p.y, q.y), between(p.z, q.z)},
                   {between(r.x, s.x), between(r.y, s.y), between(r.z, s.z)},
                   Real(t) - starts[section]};
    const auto local = values.begin() + static_cast<std::ptrdiff_t>(24 * section);
    std::copy(values.end() - 12, values.end(), unknowns.begin());
    std::copy(local, local + 24, unknowns.begin() + 12);
  }
};
