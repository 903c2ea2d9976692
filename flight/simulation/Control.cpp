// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/Control.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "flight/simulation/Random.h"
#include "platform/geomra/Degree.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

constexpr std::size_t steepPatches = 10, inclinedPatches = 4, flatPatches = 10;
constexpr double steep = 20.0 * degree;
constexpr double horizontal = 1e-9;  // [rad]
constexpr int sectors = 5;           // of the compass, over which the steep ones are spread
constexpr int pointsPerEdge = 4;     // 1 m apart, times the terrain's scale

/// A patch about the middle of a surface; nothing when it is not wholly on it, or not flown.
std::optional<Patch> patchOn(const Terrain& terrain, const FlightPlan& plan, std::uint32_t number,
                             double scale) {
  const Plane& plane = terrain.planes()[number];
  const Rectangle& r = plane.footprint;
  Patch patch{number, {}};
  for (int i = 0; i < pointsPerEdge; ++i) {
    for (int k = 0; k < pointsPerEdge; ++k) {
      const double u = (r.uLow + r.uHigh) / 2.0 + scale * (i - (pointsPerEdge - 1) / 2.0);
      const double v = (r.vLow + r.vHigh) / 2.0 + scale * (k - (pointsPerEdge - 1) / 2.0);
      const double e = r.easting + r.cosine * u - r.sine * v;
      const double n = r.northing + r.sine * u + r.cosine * v;
      if (!terrain.belongs(number, e, n) || !plan.covers(e, n)) return std::nullopt;
      patch.points.push_back({e, n, plane.heightAt(e, n)});
    }
  }
  return patch;
}

void shuffle(std::vector<Patch>& patches, Random& random) {
  for (std::size_t i = patches.size(); i > 1; --i) {
    std::swap(patches[i - 1], patches[random.below(i)]);
  }
}

/// Puts one patch of each sector to the front, then another of each, and so on.
void spread(std::vector<Patch>& patches, const Terrain& terrain) {
  std::vector<std::vector<Patch>> bySector(sectors);
  for (auto& patch : patches) {
    const double turns = terrain.planes()[patch.plane].aspect() / (2.0 * std::numbers::pi) + 0.5;
    const int sector = std::min(sectors - 1, static_cast<int>(turns * sectors));
    bySector[static_cast<std::size_t>(sector)].push_back(std::move(patch));
  }
  patches.clear();
  for (bool any = true; any;) {
    any = false;
    for (auto& sector : bySector) {
      if (sector.empty()) continue;
      patches.push_back(std::move(sector.back()));
      sector.pop_back();
      any = true;
    }
  }
}

void append(std::vector<Patch>& chosen, std::vector<Patch>& pool, std::size_t count,
            const char* what) {
  if (pool.size() < count) {
    throw Error(
        fmt::format("ground truth: the flown area has {} {} surfaces, {} are needed: choose a "
                    "longer --length or more --strips",
                    pool.size(), what, count));
  }
  std::move(pool.begin(), pool.begin() + static_cast<std::ptrdiff_t>(count),
            std::back_inserter(chosen));
}

}  // namespace

std::vector<Patch> controlPatches(const Terrain& terrain, const FlightPlan& plan,
                                  const SimulationSettings& options) {
  std::vector<Patch> steepOnes, inclinedOnes, flatOnes;
  for (std::uint32_t i = 0; i < terrain.planes().size(); ++i) {
    auto patch = patchOn(terrain, plan, i, options.terrainScale);
    if (!patch) continue;
    const double slope = terrain.planes()[i].slope();
    auto& pool = slope >= steep ? steepOnes : slope > horizontal ? inclinedOnes : flatOnes;
    pool.push_back(std::move(*patch));
  }
  Random random(options.seed, Draw::control);
  for (auto* pool : {&steepOnes, &inclinedOnes, &flatOnes}) shuffle(*pool, random);
  spread(steepOnes, terrain);
  std::vector<Patch> chosen;
  if (options.flatControl) {
    append(chosen, flatOnes, steepPatches + inclinedPatches + flatPatches, "horizontal");
    return chosen;
  }
  append(chosen, steepOnes, steepPatches, "steep");
  append(chosen, inclinedOnes, inclinedPatches, "inclined");
  append(chosen, flatOnes, flatPatches, "horizontal");
  return chosen;
}

}  // namespace Velorn::Flights::Simulation
