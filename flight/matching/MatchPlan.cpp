// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/MatchPlan.h"

#include <algorithm>

#include <fmt/format.h>

#include "flight/matching/SolverMemory.h"
#include "flight/matching/Thinning.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

constexpr std::size_t groundTruthShare = 10, enoughGroundTruth = 200;

bool takesAll(const point&) {
  return true;
}

void outline(SurfaceStore& surfaces, MatchPlan& plan) {
  for (std::size_t k = 0; k < surfaces.size(); ++k) {
    plan.hulls.emplace_back(surfaces.raster(k, takesAll).delivered);
  }
}

/// The second look at the rasters: all outlines are known now, and two rasters need not be held.
void findPairs(SurfaceStore& surfaces, double reach, MatchPlan& plan) {
  for (std::uint32_t i = 0; i < surfaces.size(); ++i) {
    const std::size_t first = plan.pairs.size();
    for (std::uint32_t j = i + 1; j < surfaces.size(); ++j) {
      if (!plan.hulls[i].isApartFrom(plan.hulls[j], reach)) plan.pairs.push_back({i, j});
    }
    if (plan.pairs.size() == first) continue;
    const MatchPoints points = surfaces.raster(i, takesAll);
    for (std::size_t k = first; k < plan.pairs.size(); ++k) {
      const PlanHull& other = plan.hulls[plan.pairs[k].j];
      plan.pairs[k].candidates = static_cast<std::size_t>(
          std::count_if(points.delivered.begin(), points.delivered.end(),
                        [&](const point& place) { return other.holds(place, reach); }));
    }
  }
}

void findKnown(const GroundTruth& groundTruth, double reach, MatchPlan& plan) {
  const auto id = static_cast<std::uint32_t>(plan.hulls.size());
  const auto& places = groundTruth.points().places;
  for (std::uint32_t i = 0; i < plan.hulls.size(); ++i) {
    const bool isWithin = std::any_of(places.begin(), places.end(), [&](const point& place) {
      return plan.hulls[i].holds(place, reach);
    });
    if (isWithin) plan.known.push_back({i, id});
  }
}

void shareOut(MatchPlan& plan) {
  const std::size_t all = plan.maxCorrespondences;
  const std::size_t forKnown =
      plan.known.empty() ? 0
                         : std::max(all / groundTruthShare, std::min(all / 2, enoughGroundTruth));
  const auto ofKnown = waterFilled(std::vector<std::size_t>(plan.known.size(), forKnown), forKnown);
  for (std::size_t k = 0; k < plan.known.size(); ++k) plan.known[k].room = ofKnown[k];
  std::vector<std::size_t> candidates;
  for (const PlannedPair& pair : plan.pairs) candidates.push_back(pair.candidates);
  const auto ofPairs = waterFilled(candidates, all - forKnown);
  for (std::size_t k = 0; k < plan.pairs.size(); ++k) plan.pairs[k].room = ofPairs[k];
}

}  // namespace

std::size_t MatchPlan::candidates() const {
  std::size_t sum = 0;
  for (const PlannedPair& pair : pairs) sum += pair.candidates;
  return sum;
}

MatchPlan planOf(const Velorn::InputParameter& configuration, SurfaceStore& surfaces,
                 const MatchOptions& options, const GroundTruth& groundTruth) {
  MatchPlan plan;
  plan.maxCorrespondences = maxCorrespondencesOf(options, surfaces.size());
  outline(surfaces, plan);
  const double reach = std::max(configuration.SearchRadius, options.reach);
  findPairs(surfaces, reach, plan);
  findKnown(groundTruth, std::max(reach, options.controlReach), plan);
  shareOut(plan);
  return plan;
}

}  // namespace Velorn::Flights
