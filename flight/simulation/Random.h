// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Random numbers that are the same on every machine and for any number of threads: a stream of its
// own for each thing that is drawn.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

#include "platform/plome/SplitMix64.h"

namespace Velorn::Flights::Simulation {

/// What streams of random numbers are for; each use has its own, so that a change of one leaves the
/// others as they are.
enum class Draw : std::uint64_t { terrain = 1, motion, errors, noise, control, correspondences };

/// The generator SplitMix64. It is cheap to begin: one is made per pulse.
class Random {
 public:
  /// @param first, second  of all things of that kind, which one it is (a strip, a pulse)
  Random(std::uint64_t seed, Draw what, std::uint64_t first = 0, std::uint64_t second = 0) {
    using Plome::splitMix64;
    const std::uint64_t ofUse = splitMix64(seed ^ splitMix64(static_cast<std::uint64_t>(what)));
    state_ = splitMix64(splitMix64(ofUse ^ first) ^ (second << 1));
  }

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
  double unit() {
    const std::uint64_t bits = Plome::splitMix64(state_);
    state_ += Plome::splitMixStep;
    return (static_cast<double>(bits >> 12) + 0.5) * 0x1p-52;
  }

  std::uint64_t state_;
};

}  // namespace Velorn::Flights::Simulation
