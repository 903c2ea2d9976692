// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Datum.h"

#include <algorithm>
#include <cmath>
#include <set>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "flight/strips/Median.h"

namespace Velorn::Flights {
namespace {

/// Which strips hang together by correspondences, and whether any of them has ground truth.
struct Part {
  std::set<std::uint32_t> strips;
  bool isControlled = false;
};

std::vector<Part> partsOf(const MatchReport& matching) {
  std::vector<Part> parts;
  for (const auto& pair : matching.pairs) {
    if (pair.sum().kept == 0) continue;
    Part joined;
    joined.strips.insert(pair.i);
    joined.isControlled = pair.isGroundTruth;
    if (!joined.isControlled) joined.strips.insert(pair.j);
    std::erase_if(parts, [&](const Part& part) {
      const bool meets = std::ranges::any_of(
          part.strips, [&](std::uint32_t strip) { return joined.strips.contains(strip); });
      if (!meets) return false;
      joined.strips.insert(part.strips.begin(), part.strips.end());
      joined.isControlled = joined.isControlled || part.isControlled;
      return true;
    });
    parts.push_back(std::move(joined));
  }
  return parts;
}

/// Of the strips that are not locked, the median [s]; NaN when all are.
double sectionLengthOf(const FlightSettings& settings, const std::vector<StripFacts>& strips) {
  const auto& locked = settings.configuration().LockedStrips;
  const double longest = settings.configuration().DefaultInterval.front();
  std::vector<float> lengths;
  for (std::size_t id = 0; id < strips.size(); ++id) {
    if (locked.contains(static_cast<int>(id))) continue;
    const double length = strips[id].last - strips[id].first;
    lengths.push_back(static_cast<float>(length / std::max(1.0, std::ceil(length / longest))));
  }
  return static_cast<double>(upperMedianOf(std::move(lengths)));
}

/// What a person must choose where nothing is known before.
void addAdvice(const FlightSettings& settings, const std::vector<StripFacts>& strips,
               bool isControlled, std::vector<std::string>& warnings) {
  const auto& configuration = settings.configuration();
  const double sectionLength = sectionLengthOf(settings, strips);
  const double weight = configuration.CellSizeWeights.front();
  const bool hasDrifts = configuration.TypeModel == "LINEAR" || configuration.TypeModel == "SPLINE";
  if (hasDrifts && isControlled && weight < 3.0 && configuration.LockedStrips.empty()) {
    warnings.push_back(fmt::format(
        "{} sections with weight {} of the ground truth: the noise of the pairs may shrink the "
        "block; weights of 3 to 5 prevent that.",
        configuration.TypeModel, weight));
  }
  constexpr double shortest = 8.0;
  if (hasDrifts && sectionLength < shortest) {
    warnings.push_back(fmt::format(
        "{} sections of {:.1f} s: a trajectory hardly drifts in so short a time, and the noise of "
        "the pairs takes the drifts' place; BIAS prevents that.",
        configuration.TypeModel, sectionLength));
  }
}

}  // namespace

DatumReport datumOf(const MatchReport& matching, const FlightSettings& settings,
                    const std::vector<StripFacts>& strips) {
  DatumReport datum;
  auto& [fixedBy, warnings] = datum;
  const auto& configuration = settings.configuration();
  const bool isFree = !settings.model.prior.isUsed;
  const auto control = matching.withGroundTruth;
  const auto inclined = matching.onInclinedGroundTruth;
  const double weight = configuration.CellSizeWeights.front();
  if (control > 0) {
    fixedBy.push_back(fmt::format(
        "{} correspondences with {} patches of ground truth, {} of them on slopes of more than "
        "10 degrees{}",
        control, matching.groundTruthPatches, inclined,
        isFree ? fmt::format("; weight {}", weight) : std::string()));
  }
  if (!configuration.LockedStrips.empty()) {
    fixedBy.push_back(fmt::format("the delivered trajectory of the locked strips {}",
                                  fmt::join(configuration.LockedStrips, ", ")));
  }
  if (settings.model.isRelative && control == 0) {
    if (configuration.LockedStrips.empty()) {
      fixedBy.emplace_back(isFree ? "the delivered trajectory, on average"
                                  : "the delivered trajectory, within its standard deviations");
    }
    warnings.emplace_back(
        isFree ? "No ground truth: nothing controls position, height, tilt and scale of the block."
               : "No ground truth: the block lies as well as the trajectory does on average.");
  }
  const auto parts = partsOf(matching);
  for (const auto& part : parts) {
    if (parts.size() < 2 || part.isControlled) continue;
    warnings.push_back(fmt::format(
        "The strips {} hang together with no other ones and with no ground truth: nothing controls "
        "where they lie.",
        fmt::join(part.strips, ", ")));
  }
  constexpr double fewestInclined = 0.1;
  if (control > 0 &&
      static_cast<double>(inclined) < fewestInclined * static_cast<double>(control)) {
    warnings.emplace_back(
        "Nearly all ground truth is flat: it controls heights; horizontal position and scale of "
        "the block are hardly controlled.");
  }
  if (!isFree && configuration.CellSizeWeights != ModelSettings().configuration.CellSizeWeights) {
    warnings.emplace_back(
        "The weights that are set do not count with priors: everything weighs by its standard "
        "deviation.");
  }
  if (isFree) addAdvice(settings, strips, control > 0, warnings);
  return datum;
}

}  // namespace Velorn::Flights
