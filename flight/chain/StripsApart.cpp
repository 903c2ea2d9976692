// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/StripsApart.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "flight/matching/PlanHull.h"
#include "flight/matching/StripShift.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/strips/GridFile.h"
#include "flight/strips/ParallelLoop.h"
#include "platform/orvek/Figures.h"

namespace Velorn::Flights {
namespace {

constexpr double cellsOfSpacing = 3.0;  // smaller cells have holes
constexpr double reachInCells = 32.0;

/// Median height of ground truth above the strips' cells that it lies in [m].
double controlAbove(const std::vector<point>& known, const std::vector<HeightGrid>& grids) {
  std::vector<double> heights;
  for (const HeightGrid& grid : grids) {
    for (const point& place : known) {
      const auto* const height = grid.cells().find(cellOf(place, grid.side()));
      if (height) heights.push_back(place.z - height->mean());
    }
  }
  return OrvekStatistic::quantileInPlace(heights, 0.5);
}

ApartReport measured(RunContext& run, double spacing) {
  ApartReport report;
  report.spacing = spacing;
  const double side = std::max(1e-3, cellsOfSpacing * spacing);
  std::vector<HeightGrid> grids;
  std::vector<PlanHull> hulls;
  for (const auto& strip : run.strips) {
    withMemoryFor(strip.file.string(), [&] {
      const auto places =
          GridFile(strip.file, run.configuration()).world<point>("Positions").whole();
      grids.emplace_back(*places, side);
      hulls.emplace_back(*places);
    });
  }
  std::vector<PairShift> pairs;
  for (std::uint32_t i = 0; i < grids.size(); ++i) {
    for (std::uint32_t j = i + 1; j < grids.size(); ++j) {
      if (!hulls[i].isApartFrom(hulls[j], 0.0)) pairs.push_back({i, j});
    }
  }
  forEachInParallel(0, pairs.size(), 1, [&](std::size_t k) {
    const auto shift = shiftBetween(grids[pairs[k].i], grids[pairs[k].j], reachInCells * side);
    if (!shift) return;
    pairs[k].shift = {shift->east, shift->north, shift->up};
    pairs[k].cells = shift->cells;
  });
  report.control = controlAbove(run.surfaces.knownPoints().places, grids);
  for (const PairShift& pair : pairs) {
    if (pair.cells > 0) report.pairs.push_back(pair);
  }
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
