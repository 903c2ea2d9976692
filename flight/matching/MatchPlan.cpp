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

std::vector<std::filesystem::path> rastersOf(const Velorn::InputParameter& configuration,
                                             const Velorn::FileContainer& files) {
  auto rasters = files.getStripFilesAndGroundTruthRaster(configuration.RootPath /
                                                         configuration.getRasterPath());
  for (const auto& raster : rasters) {
    std::error_code fault;
    if (std::filesystem::exists(raster, fault)) continue;
    throw Error(raster.string() + ": no such raster; rasterize first");
  }
  return rasters;
}

bool takesAll(const point&) {
  return true;
}

void outline(const Velorn::InputParameter& configuration, MatchPlan& plan) {
  for (std::size_t k = 0; k < plan.strips.size(); ++k) {
    const MatchPoints points = readRaster(plan.rasters[k], configuration, takesAll);
    plan.hulls.emplace_back(points.delivered);
    const std::uint32_t week = readWeek(plan.strips[k], configuration);
    if (points.size() == 0 || points.week == week) continue;
    throw Error(fmt::format("{}: is of week {}, its strip of week {}: rasterize the strip anew",
                            plan.rasters[k].string(), points.week, week));
  }
}

/// The second reading of the rasters: all outlines are known now, and never two rasters are held.
void findPairs(const Velorn::InputParameter& configuration, double reach, MatchPlan& plan) {
  for (std::uint32_t i = 0; i < plan.strips.size(); ++i) {
    const std::size_t first = plan.pairs.size();
    for (std::uint32_t j = i + 1; j < plan.strips.size(); ++j) {
      if (!plan.hulls[i].isApartFrom(plan.hulls[j], reach)) plan.pairs.push_back({i, j});
    }
    if (plan.pairs.size() == first) continue;
    const MatchPoints points = readRaster(plan.rasters[i], configuration, takesAll);
    for (std::size_t k = first; k < plan.pairs.size(); ++k) {
      const PlanHull& other = plan.hulls[plan.pairs[k].j];
      plan.pairs[k].candidates = static_cast<std::size_t>(
          std::count_if(points.delivered.begin(), points.delivered.end(),
                        [&](const point& place) { return other.holds(place, reach); }));
    }
  }
}

void findKnown(const GroundTruth& groundTruth, double reach, MatchPlan& plan) {
  const auto id = static_cast<std::uint32_t>(plan.strips.size());
  const auto& places = groundTruth.points().places;
  for (std::uint32_t i = 0; i < plan.strips.size(); ++i) {
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

GroundTruth groundTruthOf(const Velorn::InputParameter& configuration,
                          const Velorn::FileContainer& files) {
  const auto rasters = rastersOf(configuration, files);
  if (rasters.size() == files.getStripFiles().size()) return GroundTruth({});
  return GroundTruth(readGroundTruth(rasters.back(), configuration));
}

MatchPlan planOf(const Velorn::InputParameter& configuration, const Velorn::FileContainer& files,
                 const MatchOptions& options, const GroundTruth& groundTruth) {
  MatchPlan plan;
  plan.strips = files.getStripFiles();
  plan.rasters = rastersOf(configuration, files);
  plan.maxCorrespondences = maxCorrespondencesOf(options, plan.strips.size());
  outline(configuration, plan);
  const double reach = std::max(configuration.SearchRadius, options.reach);
  findPairs(configuration, reach, plan);
  findKnown(groundTruth, reach, plan);
  shareOut(plan);
  return plan;
}

}  // namespace Velorn::Flights
