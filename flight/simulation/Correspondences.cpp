// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/simulation/Correspondences.h"

#include <memory>
#include <utility>

#include <fmt/format.h>

#include "flight/simulation/PlanePairs.h"
#include "flight/strips/OrFail.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/CorrespondenceBlock.h>

namespace Velorn::Flights::Simulation {
namespace {

using Velorn::SphericalBeing;
using Velorn::TerrainType;

constexpr std::size_t wantedGroundTruth = 100;  // an adjustment refuses to run with fewer

std::uint8_t codeOf(TerrainType kind) {
  return static_cast<std::uint8_t>(10 + static_cast<std::uint32_t>(kind));
}

std::vector<Place> placesOf(const std::vector<Echo>& echoes) {
  std::vector<Place> places;
  places.reserve(echoes.size());
  for (const Echo& echo : echoes) {
    places.push_back({echo.place, echo.plane, static_cast<std::uint32_t>(places.size())});
  }
  return places;
}

std::vector<Place> placesOf(const std::vector<Patch>& patches) {
  std::vector<Place> places;
  for (const Patch& patch : patches) {
    for (const point& p : patch.points) {
      places.push_back({p, patch.plane, static_cast<std::uint32_t>(places.size())});
    }
  }
  return places;
}

std::vector<PairedSides> pairsOf(const MeasuredFlight& flight, const SimulationSettings& options) {
  std::vector<PlacesOnPlanes> sides;
  for (const auto& echoes : flight.strips) {
    sides.emplace_back(placesOf(echoes), flight.planes.size());
  }
  sides.emplace_back(placesOf(flight.patches), flight.planes.size());
  return pairedSides(sides, flight.planes, options.correspondences, options.seed);
}

/// @throws Error when an adjustment could not do with the pairs
void checkEnough(const std::vector<PairedSides>& all, std::size_t strips) {
  std::vector<std::size_t> of(strips + 1);  // the ground truth as the last
  for (const PairedSides& sides : all) {
    of[sides.i] += sides.pairs.size();
    of[sides.j] += sides.pairs.size();
  }
  for (std::size_t i = 0; i < strips; ++i) {
    if (of[i] > 0) continue;
    throw Error(fmt::format(
        "correspondences: no point of strip {} has a partner: choose more --points", i + 1));
  }
  if (of.back() >= wantedGroundTruth) return;
  throw Error(fmt::format(
      "correspondences: {} points are near the ground truth, {} are needed: choose more --points",
      of.back(), wantedGroundTruth));
}

/// Makes the points of one block.
class Beings {
 public:
  explicit Beings(const MeasuredFlight& flight)
      : flight_(flight), groundTruth_(placesOf(flight.patches)) {}

  void add(const PairedSides& sides, Velorn::CorrespondenceBlock& block) const {
    const bool known = sides.j == flight_.strips.size();
    for (const PlanePair& pair : sides.pairs) {
      const Plane& plane = flight_.planes[pair.plane];
      const std::uint8_t code = codeOf(kindOf(plane));
      const std::uint8_t first = known ? codeOf(TerrainType::GROUND_TRUTH) : code;
      block.add(measured(sides.i, pair.i, plane, first),
                known ? SphericalBeing(groundTruth_[pair.j].at, {}, 0.0, plane.normal, {}, code)
                      : measured(sides.j, pair.j, plane, code));
    }
  }

 private:
  SphericalBeing measured(std::size_t strip, std::uint32_t number, const Plane& plane,
                          std::uint8_t code) const {
    const Echo& echo = flight_.strips[strip][number];
    const DeliveredPoint delivered = flight_.deliver(echo);
    return {delivered.world, echo.scanner, echo.time, plane.normal, delivered.direction, code};
  }

  const MeasuredFlight& flight_;
  std::vector<Place> groundTruth_;
};

}  // namespace

std::size_t saveCorrespondences(const MeasuredFlight& flight, const SimulationSettings& options,
                                OutputFolder& out) {
  const auto all = pairsOf(flight, options);
  checkEnough(all, flight.strips.size());
  const auto storage = std::make_shared<Strandel::MyStorage>(0, 0, 0, 1);
  const Beings beings(flight);
  std::size_t number = 0;
  for (const PairedSides& sides : all) {
    const bool known = sides.j == flight.strips.size();
    const std::uint32_t weekOfJ = known ? 0 : FlightPlan::week;  // the ground truth has no time
    const BlockName name{static_cast<std::uint32_t>(sides.i), static_cast<std::uint32_t>(sides.j),
                         known};
    Velorn::CorrespondenceBlock block(out.correspondences(name), known, FlightPlan::week, weekOfJ,
                                      storage);
    beings.add(sides, block);
    orFail(block.save(), Error::NoSpace);
    number += sides.pairs.size();
  }
  return number;
}

}  // namespace Velorn::Flights::Simulation
