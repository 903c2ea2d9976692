// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/report/RedundancyText.h"

#include <algorithm>

#include <fmt/format.h>

namespace Velorn::Flights {

std::vector<std::string> redundancyWarnings(const AdjustmentReport& adjustment) {
  constexpr std::size_t enough = 20;
  std::vector<std::string> warnings;
  const auto count = static_cast<std::size_t>(std::max(0, adjustment.solver.residuals)),
             unknowns = static_cast<std::size_t>(std::max(0, adjustment.solver.estimated));
  if (count < enough * unknowns) {
    warnings.push_back(
        fmt::format("Only {} correspondences for {} estimated unknowns: at least {} for each keep "
                    "noise and wrong ones from deciding them.",
                    count, unknowns, enough));
  }
  for (const auto& strip : adjustment.redundancy) {
    if (strip.correspondences >= enough * strip.unknowns) continue;
    warnings.push_back(
        fmt::format("{}: only {} correspondences for its {} unknowns, which they hardly determine; "
                    "a simpler model or longer sections have fewer.",
                    strip.strip, strip.correspondences, strip.unknowns));
  }
  return warnings;
}

}  // namespace Velorn::Flights
