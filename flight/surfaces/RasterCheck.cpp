// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What can be known before any strip is opened.
#include <cmath>

#include <fmt/format.h>

#include "flight/surfaces/PlaneFit.h"
#include "flight/surfaces/Rasterize.h"
#include "flight/surfaces/Selection.h"
#include <velorn/TerrainType.h>
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

void checkBetween(const char* name, double value, double low, double high) {
  if (value >= low && value <= high) return;
  throw Error(fmt::format("{} must be between {} and {}, not {}", name, low, high, value),
              Error::BadSettings);
}

/// Lists per class have five finite entries.
void checkPerClass(const char* name, const std::vector<double>& values, double low) {
  if (values.size() != std::tuple_size_v<PerClass>) {
    throw Error(
        fmt::format("{} has {} entries, one for each of 5 classes is needed", name, values.size()),
        Error::BadSettings);
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (std::isfinite(values[i]) && values[i] >= low) continue;
    throw Error(fmt::format("{} of {} must be a number of at least {}, not {}", name,
                            Velorn::terrainTypeToString(static_cast<Velorn::TerrainType>(i)), low,
                            values[i]),
                Error::BadSettings);
  }
}

}  // namespace

void check(const Velorn::InputParameter& configuration, const RasterSettings& options) {
  checkBetween("neighbours", options.neighbours, fewestForPlane, 1000);
  checkBetween("neighbour-radius", options.neighbourRadius, 0.01, 1000);
  checkBetween("max-roughness", options.maxRoughness, 0, 1000);
  checkBetween("slope-limit", options.slopeLimit, 0, 90);
  checkPerClass("CellSize", configuration.CellSize, 0.001);
  checkPerClass("Amplitude", configuration.Amplitude, std::numeric_limits<double>::lowest());
  const Selection selection(configuration.SelectionStr);
}

}  // namespace Velorn::Flights
