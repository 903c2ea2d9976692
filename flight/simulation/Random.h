// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Random numbers that are the same on every machine and for any number of threads: a stream of its
// own for each thing that is drawn.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

namespace Velorn::Flights::Simulation {

/// What streams of random numbers are for; each use has its own, so that a change of one leaves the
/// others as they are.
enum class Draw : std::uint64_t { terrain = 1, motion, errors, noise, control, correspondences };

/// The generator SplitMix64 (Steele, Lea, Flood: Fast splittable pseudorandom number generators,
/// 2014). It is cheap to begin: one is made per pulse.
class Random {
 public:
  /// @param first, second  of all things of that kind, which one it is (a strip, a pulse)
  Random(std::uint64_t seed, Draw what, std::uint64_t first = 0, std::uint64_t second = 0)
      : state_(mixed(mixed(mixed(seed ^ mixed(static_cast<std::uint64_t>(what))) ^ first) ^
                     (second << 1))) {}

  /// Uniform between two bounds, neither of which is hit for bounds 0 and 1.
  double uniform(double low, double high) { return low + (high - low) * unit(); }

  /// One of 0 .. count − 1.
  std::uint64_t below(std::uint64_t count) {
    return static_cast<std::uint64_t>(unit() * static_cast<double>(count));
  }

  /// Normal with mean 0 and standard deviation 1 (Box and Muller).
  double normal() {
    const double radius = std::sqrt(-2.0 * std::log(unit()));
    return radius * std::cos(2.0 * std::numbers::pi * unit());
  }

 private:
  static std::uint64_t mixed(std::uint64_t z) {
    z += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
  }

  double unit() {
    const std::uint64_t bits = mixed(state_);
    state_ += 0x9E3779B97F4A7C15;
    return (static_cast<double>(bits >> 12) + 0.5) * 0x1p-52;
  }

  std::uint64_t state_;
};

}  // namespace Velorn::Flights::Simulation
