// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Points of a strip to measure with.
#pragma once

#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

#include "platform/geomra/PhysicalSpace.h"

/// A swath of 400 m with 8 points per square metre, line by line, over hills with houses.
inline std::vector<Geomra::PhysicalSpace::point> swath(std::size_t count) {
  constexpr std::size_t perLine = 1131;
  constexpr double spacing = 400.0 / perLine;
  std::mt19937_64 random(3);
  std::normal_distribution<double> noise(0.0, 0.02);
  std::vector<Geomra::PhysicalSpace::point> points;
  points.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double x = static_cast<double>(i % perLine) * spacing + noise(random);
    const double y = static_cast<double>(i / perLine) * spacing + noise(random);
    const bool roof = std::fmod(x, 40.0) < 10.0 && std::fmod(y, 40.0) < 12.0;
    const double ground = 450.0 + 10.0 * std::sin(x / 90.0) * std::cos(y / 120.0);
    points.push_back({600000.0 + x, 5250000.0 + y, ground + (roof ? 6.0 : 0.0) + noise(random)});
  }
  return points;
}
