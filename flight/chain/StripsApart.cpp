// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/StripsApart.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "flight/chain/PointMovement.h"
#include "flight/matching/PlanHull.h"
#include "flight/matching/StripShift.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/strips/GridFile.h"
#include "flight/strips/ParallelLoop.h"
#include "platform/geomra/Degree.h"
#include "platform/orvek/Figures.h"

namespace Velorn::Flights {
namespace {

constexpr double cellsOfSpacing = 3.0;  // smaller cells have holes
constexpr double reachInCells = 32.0;
constexpr double fewestCells = 4.0;

/// As far as mountings and trajectories are ever off: 10 m and 3° [m].
double reachOfErrors(RunContext& run) {
  return 10.0 + 3.0 * Geomra::degree * reachOf(run).range;
}

/// Of ground truth, the heights above the strip's cells that it lies in [m].
void addControlAbove(const std::vector<point>& known, const HeightGrid& grid,
                     std::vector<double>& heights) {
  for (const point& place : known) {
    const auto* const height = grid.cells().find(cellOf(place, grid.side()));
    if (height) heights.push_back(place.z - height->mean());
  }
}

/// What is kept of a strip for those that come after it.
struct Outline {
  PlanHull hull;
  std::vector<ReliefCell> relief;
};

/// The shifts of a strip against those before it.
std::vector<PairShift> shiftsTo(std::uint32_t j, const PlanHull& hull, const HeightGrid& grid,
                                const std::vector<Outline>& before, double reach) {
  std::vector<PairShift> pairs(before.size());
  forEachInParallel(0, before.size(), 1, [&](std::size_t i) {
    if (before[i].hull.isApartFrom(hull, 0.0)) return;
    const auto shift = shiftBetween(before[i].relief, grid, reach);
    if (!shift) return;
    pairs[i] = {
        static_cast<std::uint32_t>(i), j, {shift->east, shift->north, shift->up}, shift->cells};
  });
  std::erase_if(pairs, [](const PairShift& pair) { return pair.cells == 0; });
  return pairs;
}

ApartReport measured(RunContext& run, double spacing) {
  ApartReport report;
  report.spacing = spacing;
  const double side = std::max(1e-3, cellsOfSpacing * spacing);
  const double reach = std::clamp(reachOfErrors(run), fewestCells * side, reachInCells * side);
  const auto& known = run.surfaces.knownPoints().places;
  std::vector<double> controlAbove;
  std::vector<Outline> strips;
  for (const auto& strip : run.strips) {
    withMemoryFor(strip.file.string(), [&] {
      const auto places =
          GridFile(strip.file, run.configuration()).world<point>("Positions").whole();
      const HeightGrid grid(*places, side);
      PlanHull hull(*places);
      const auto pairs =
          shiftsTo(static_cast<std::uint32_t>(strips.size()), hull, grid, strips, reach);
      report.pairs.insert(report.pairs.end(), pairs.begin(), pairs.end());
      addControlAbove(known, grid, controlAbove);
      strips.push_back({std::move(hull), reliefOf(grid)});
    });
  }
  report.control = OrvekStatistic::quantileInPlace(controlAbove, 0.5);
  return report;
}

}  // namespace

ApartReport stripsApart(RunContext& run, double spacing) {
  StepKey key("apart");
  key.addFiles("surface", run.surfaceFiles());
  key.add("spacing", spacing);
  const StepRecord record = run.folder.record("apart");
  if (!run.settings.force) {
    if (auto done = record.valid<ApartReport>(key)) return *done;
  }
  record.begin();
  ApartReport report = measured(run, spacing);
  record.finish(key, {}, report);
  return report;
}

std::string textOf(const ApartReport& apart) {
  const auto* const pair = apart.farthestPair();
  if (!pair) return "no two strips have enough surfaces in common to tell how far they lie apart";
  const auto control = std::isfinite(apart.control)
                           ? fmt::format("; control lies {:.2f} m above them", apart.control)
                           : std::string();
  return fmt::format(
      "strips lie up to {:.2f} m apart ({} and {}: {:.2f} m east, {:.2f} m north, {:.2f} m up); "
      "points {:.2f} m{}",
      pair->length(), pair->i, pair->j, pair->shift[0], pair->shift[1], pair->shift[2],
      apart.spacing, control);
}

}  // namespace Velorn::Flights
