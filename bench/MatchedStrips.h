// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Two strips one above the other, of any length, for benchmarks of the matching.
#pragma once

#include <cmath>
#include <random>

#include "flight/surfaces/MatchPoints.h"

/// Points of a strip 500 m wide with ten of them per square metre, line after line; the classes
/// change from tile to tile of 20 m, among them all four.
/// @param nth  takes every nth of them only, as a raster does, with what a raster says of them
inline Velorn::Flights::MatchPoints waves(std::size_t points, unsigned seed, std::size_t nth = 1) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> along(0.0, 0.3), across(0.0, 500.0);
  std::normal_distribution<double> noise(0.0, 0.02);
  Velorn::Flights::MatchPoints strip;
  strip.week = 2318;
  for (std::size_t k = 0; k < points; ++k) {
    const double x = across(random), y = double(k) / 5000.0 + along(random), z = noise(random);
    if (k % nth != 0) continue;
    const double slope = 0.2 * std::cos(0.1 * x);
    const Velorn::Flights::vector normal{-slope, 0, 1};
    strip.delivered.push_back({5e5 + x, 5.3e6 + y, 450 + 2 * std::sin(0.1 * x) + z});
    strip.scanner.push_back({500, 1, x - 250});
    strip.times.push_back(1e5 + 1e-6 * double(k));
    strip.normals.push_back((1.0 / std::sqrt(1 + slope * slope)) * normal);
    strip.beams.push_back({250 - x, 0, 500});
    strip.codes.push_back(std::uint8_t(11 + (int(x / 20) + int(y / 20)) % 4));
    if (nth == 1) continue;
    strip.roughness.push_back(0.02);
    strip.heights.push_back(z);
  }
  return strip;
}
