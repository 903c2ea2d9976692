// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Sufficiency.h"

#include <array>
#include <string>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "flight/report/RedundancyText.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

constexpr std::size_t enough = 20;  // correspondences of a class
constexpr std::array<const char*, 5> classNames{"ground_truth", "roof", "slope", "bed", "flat"};

void warnOfClasses(const MatchReport& matching, DatumReport& datum) {
  std::array<Funnel, 5> sums;
  for (const auto& pair : matching.pairs) {
    for (std::size_t k = 0; k < sums.size(); ++k) sums[k] += pair.classes[k];
  }
  for (std::size_t k = 0; k < sums.size(); ++k) {
    if (sums[k].kept == 0 || sums[k].kept >= enough) continue;
    datum.warnings.push_back(
        fmt::format("Only {} correspondences of the class {}, of {} candidates: they control next "
                    "to nothing, and nobody can tell whether they are right.",
                    sums[k].kept, classNames[k], sums[k].candidates));
  }
}

bool coversTooLittle(const StripSupport& support, const StripFacts& strip) {
  constexpr double leastShare = 0.5, ofQuantiles = 0.9;
  return support.last - support.first < leastShare * ofQuantiles * (strip.last - strip.first);
}

std::string namesOf(const std::vector<std::string>& names) {
  constexpr std::size_t most = 10;
  if (names.size() <= most) return fmt::format("{}", fmt::join(names, ", "));
  return fmt::format("{} and {} more", fmt::join(names.begin(), names.begin() + most, ", "),
                     names.size() - most);
}

void warnOfSpread(const MatchReport& matching, const std::vector<StripFacts>& strips,
                  const std::set<int>& locked, DatumReport& datum) {
  constexpr double fewestWalls = 1.0;
  std::vector<std::string> isShort, isFlat;
  for (const StripSupport& support : matching.support) {
    if (support.strip >= strips.size() || support.correspondences == 0) continue;
    if (locked.contains(static_cast<int>(support.strip))) continue;
    const StripFacts& strip = strips[support.strip];
    const auto name = strip.file.filename().string();
    if (coversTooLittle(support, strip)) {
      isShort.push_back(fmt::format("{} ({:.1f} of {:.1f} s)", name, support.last - support.first,
                                    strip.last - strip.first));
    }
    if (support.weakestAspect < fewestWalls) isFlat.push_back(name);
  }
  if (!isShort.empty()) {
    datum.warnings.push_back(
        "The correspondences lie within less than half of these strips, and "
        "what drifts beyond them is a guess: " +
        namesOf(isShort) + ".");
  }
  if (!isFlat.empty()) {
    datum.warnings.push_back(
        "There is hardly a slope in some horizontal direction, so that next "
        "to nothing controls where these strips lie in it: " +
        namesOf(isFlat) + ".");
  }
}

}  // namespace

void requireEnough(const Velorn::SolverEnd& end, const std::filesystem::path& which) {
  constexpr int fewest = 30, perUnknown = 5;
  if (end.estimated <= 0 || end.residuals < 0) return;
  if (end.residuals >= fewest && end.residuals >= perUnknown * end.estimated) return;
  throw Error(
      fmt::format("{}: only {} correspondences for {} estimated unknowns; {} for each, and "
                  "{} in all, are needed for a result that means anything",
                  which.string(), end.residuals, end.estimated, perUnknown, fewest));
}

void addSufficiencyWarnings(const RoundReport& round, const std::vector<StripFacts>& strips,
                            const std::set<int>& locked, DatumReport& datum) {
  if (round.adjustment) {
    const auto few = redundancyWarnings(*round.adjustment);
    datum.warnings.insert(datum.warnings.end(), few.begin(), few.end());
  }
  warnOfClasses(*round.matching, datum);
  warnOfSpread(*round.matching, strips, locked, datum);
}

}  // namespace Velorn::Flights
