// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/Options.h"

#include <algorithm>
#include <exception>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "platform/tessaly/TransverseMercator.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights::Simulation {
namespace {

void checkRange(const char* name, double value, double low, double high) {
  if (value >= low && value <= high) return;  // not so NaN
  throw Error(fmt::format("{} must be between {} and {}, not {}", name, low, high, value));
}

void checkKind(const std::string& word) {
  if (word.empty() || std::ranges::find(errorKinds, word) != errorKinds.end()) return;
  throw Error(
      fmt::format("--only-errors must be one of {}, not {}", fmt::join(errorKinds, ", "), word));
}

}  // namespace

void check(const SimulationSettings& options) {
  checkRange("--points", static_cast<double>(options.points), 1000, 2e9);
  checkRange("--strips", options.strips, 2, 500);
  checkRange("--length", options.length, 10, 20'000);
  checkRange("--height", options.height, 10, 5000);
  checkRange("--speed", options.speed, 1, 200);
  checkRange("--terrain-scale", options.terrainScale, 0.05, 20);
  checkRange("--range-noise", options.rangeNoise, 0, 10);
  checkRange("--angle-noise", options.angleNoise, 0, 1);
  checkRange("--error-scale", options.errorScale, 0, 10);
  checkKind(options.onlyErrors);
  if (options.correspondences != 0) {
    checkRange("--correspondences", static_cast<double>(options.correspondences), 1000, 40e6);
  }
  try {
    Tessaly::TransverseMercatorProjectionParameter::UTMfromEPSG(options.epsg);
  } catch (const std::exception& error) {
    throw Error(fmt::format("--epsg {}: {}", options.epsg, error.what()));
  }
}

}  // namespace Velorn::Flights::Simulation
