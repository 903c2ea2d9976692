// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Chance that is the same on every machine.
#pragma once

#include <cstdint>

namespace Plome {

/// How far the state of the generator goes on from one number to the next.
constexpr std::uint64_t splitMixStep = 0x9E3779B97F4A7C15;

/// The number that the generator SplitMix64 gives in a state (Steele, Lea, Flood: Fast splittable
/// pseudorandom number generators, 2014).
constexpr std::uint64_t splitMix64(std::uint64_t state) {
  std::uint64_t z = state + splitMixStep;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
  return z ^ (z >> 31);
}

}  // namespace Plome
