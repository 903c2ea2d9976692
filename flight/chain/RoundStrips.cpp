// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/RoundStrips.h"

#include <algorithm>
#include <system_error>

#include <fmt/format.h>

#include "flight/strips/OrFail.h"
#include "flight/surfaces/Rasterize.h"

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

void makeEmpty(const fs::path& folder) {
  std::error_code fault;
  fs::remove_all(folder, fault);
  fs::create_directories(folder, fault);
  if (fs::is_directory(folder) && fs::is_empty(folder)) return;
  throw Error(folder.string() + ": cannot be made an empty folder: " + fault.message(),
              Error::NoSpace);
}

/// While strips lie far apart their shapes are bent, too: planes may be rougher, normals disagree
/// more, and what is flat in one strip is a slope in the other.
RasterSettings optionsOf(const FlightSettings& settings, const Coarseness& coarseness) {
  auto options = settings.raster;
  options.neighbourRadius = std::min(1000.0, options.neighbourRadius * coarseness.scale);
  options.maxRoughness = std::min(1000.0, options.maxRoughness * coarseness.scale);
  options.neighbours = Coarseness::neighbours(options.neighbours);
  options.mostNeighbours = options.neighbours;
  if (coarseness.isCoarse()) options.slopeLimit = 0.0;
  return options;
}

}  // namespace

double spacingOfStrips(const RunContext& run) {
  double largest = 0.0;
  for (const auto& strip : run.strips) {
    const double spacing =
        spacingOfStrip(strip.file, run.configuration(), run.settings.raster.neighbourRadius);
    if (spacing > largest) largest = spacing;
  }
  if (largest > 0.0) return largest;
  throw Error(fmt::format(
      "no strip has 16 points within {} m of each other: the distance of the points, which coarse "
      "rounds begin from, is not known; --neighbour-radius takes more",
      run.settings.raster.neighbourRadius));
}

SurfaceStore stripsOfRound(const RunContext& run, const fs::path& folder,
                           const Coarseness& coarseness, const Solution* solution,
                           Velorn::InputParameter& configuration) {
  constexpr double widestAngle = 3.0;  // in units of the threshold
  makeEmpty(folder);
  const auto options = optionsOf(run.settings, coarseness);
  std::vector<SurfaceFiles> files;
  for (std::uint32_t id = 0; id < run.strips.size(); ++id) {
    const auto& strip = run.strips[id].file;
    const auto name = strip.filename().string();
    const auto raster = folder / fmt::format("{:06}_{}", id, name);
    const auto planar = folder / fmt::format("{:06}_planar_{}", id, name);
    files.push_back({strip, coarseness.isCoarse() ? raster : planar, raster});
  }
  const auto known = folder / run.groundTruth.filename();
  SurfaceStore surfaces(std::move(files), known, configuration, run.memory);
  for (std::uint32_t id = 0; id < run.strips.size(); ++id) {
    const auto& strip = run.strips[id].file;
    const auto& made = surfaces.files(id);
    const StripView view{id, solution, coarseness.side()};
    if (coarseness.isCoarse()) {
      rasterizeView(strip, view, made.raster, configuration, options, *run.watcher);
    } else {
      rasterizeStrip(made, configuration, run.settings.raster, *run.watcher, view);
    }
  }
  rasterizeGroundTruth(run.groundTruth, known, configuration);
  configuration.ThresholdMaxAngle =
      std::min(90.0, configuration.ThresholdMaxAngle * std::min(coarseness.scale, widestAngle));
  return surfaces;
}

}  // namespace Velorn::Flights
