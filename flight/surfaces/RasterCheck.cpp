// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What can be known before any strip is opened, beside the bounds of settings.
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "flight/surfaces/Rasterize.h"
#include "flight/surfaces/Selection.h"
#include <velorn/TerrainType.h>
#include <velorn/flight/Error.h>

namespace Velorn::Flights {

namespace {

/// Lists per class have as many numbers as there are classes; the cells are there once the
/// configuration was checked.
void checkPerClass(const char* name, const std::vector<double>& values, double low) {
  constexpr auto classes = std::tuple_size_v<PerClass>;
  if (values.size() != classes) {
    throw Error(fmt::format("{} has {} entries, one for each of {} classes is needed", name,
                            values.size(), classes),
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

void check(const Velorn::InputParameter& configuration) {
  checkPerClass("CellSize", configuration.CellSize, 0.001);
  checkPerClass("Amplitude", configuration.Amplitude, std::numeric_limits<double>::lowest());
  const Selection selection(configuration.SelectionStr);
}

}  // namespace Velorn::Flights
