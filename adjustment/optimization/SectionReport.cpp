// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/SectionReport.h"

#include <fmt/format.h>

#include "adjustment/georef/TrajectoryCorrection.h"

namespace Velorn {
namespace {

const char* statusOf(const SectionState& state) {
  if (state.isLow && state.isLocked) return "Locked&LowCorr ";
  return state.isLow ? "LowCorr        " : "Locked         ";
}

}  // namespace

std::vector<SectionState> sectionStates(const std::vector<StripSections>& strips,
                                        const std::vector<unsigned int>& correspondences,
                                        const std::set<int>& lockedStrips, unsigned int fewest) {
  std::vector<SectionState> states;
  for (std::uint32_t strip = 0; strip < strips.size(); ++strip) {
    const bool isLocked = lockedStrips.contains(static_cast<int>(strip));
    for (const auto& [start, one] : strips[strip].sections) {
      const auto section = static_cast<std::uint32_t>(states.size());  // numbers run on
      const unsigned int count = correspondences.at(section);
      const auto [position, angles] = usedPowers(one.type);
      states.push_back({strip, section, count, count < fewest, isLocked, 3 * (position + angles)});
    }
  }
  return states;
}

std::string sectionListing(const std::vector<SectionState>& states) {
  std::string text;
  for (const auto& state : states) {
    if (state.isConstant()) text += fmt::format("{} ", statusOf(state));
    text += fmt::format("StripID {} section {}  num of corres: {}\n", state.strip, state.section,
                        state.correspondences);
  }
  return text;
}

int estimatedUnknowns(const std::vector<SectionState>& states, const AdjustmentSettings& settings) {
  int sum = 3 * (int{settings.estimateOffsets} + int{settings.estimateScales} +
                 int{settings.estimateMisalignment} + int{settings.estimateLeverArm});
  for (const auto& state : states) sum += state.isConstant() ? 0 : state.coefficients;
  return sum;
}

std::vector<std::uint32_t> stripsHeldConstant(const std::vector<SectionState>& states) {
  std::vector<std::uint32_t> strips;
  for (const auto& state : states) {
    if (state.isConstant() && (strips.empty() || strips.back() != state.strip)) {
      strips.push_back(state.strip);
    }
  }
  return strips;
}

}  // namespace Velorn
