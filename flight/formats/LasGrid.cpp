// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/LasGrid.h"

#include <cmath>
#include <limits>

namespace Velorn::Flights {

std::optional<std::int32_t> LasGrid::number(double coordinate) const {
  using Limits = std::numeric_limits<std::int32_t>;
  const double number = std::round((coordinate - offset) / scale);
  if (!(number >= Limits::min() && number <= Limits::max())) return {};
  return static_cast<std::int32_t>(number);
}

std::optional<LasGrid> gridFor(double lowest, double highest, const LasGrid& given) {
  const auto holdsAll = [&](const LasGrid& grid) {
    return grid.number(lowest) && grid.number(highest);
  };
  if (holdsAll(given)) return given;
  const double unit = 1000.0 * given.scale;
  const LasGrid grid{given.scale, std::round((lowest / 2 + highest / 2) / unit) * unit};
  if (holdsAll(grid)) return grid;
  return {};
}

}  // namespace Velorn::Flights
