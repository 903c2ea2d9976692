// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/ControlFit.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "flight/matching/ControlWeights.h"

namespace Velorn::Flights {
namespace {

constexpr double notable = 0.8;   // a weight below that is told
constexpr std::size_t named = 6;  // patches in a warning

/// A patch with all that a round says of it.
struct Fitted {
  const ControlItem* item;
  double after;           // [m]
  bool isLonely = false;  // far off the others

  std::string text() const {
    const bool isWeak = item->weight < notable;
    return fmt::format("{} (E {:.2f}, N {:.2f}): {:+.1f} cm{}", item->id, item->place[0],
                       item->place[1], 100.0 * after,
                       isWeak ? fmt::format(", weight {:.2f}", item->weight) : "");
  }
};

using Patches = std::vector<Fitted>;

/// Those that have correspondences, the worst first.
Patches patchesOf(const RoundReport& round) {
  Patches patches;
  if (!round.matching || !round.adjustment || round.isCoarse()) return patches;
  std::map<std::uint32_t, const ControlItem*> items;
  for (const ControlItem& item : round.matching->control) items[item.id] = &item;
  std::vector<double> misfits;
  for (const ControlMisfit& one : round.adjustment->control) {
    if (!items.contains(one.id) || !std::isfinite(one.after)) continue;
    patches.push_back({items.at(one.id), one.after});
    misfits.push_back(one.after);
  }
  const double spread = controlSpread(misfits, round.adjustment->after.pairs.nmad);
  for (Fitted& one : patches) {
    one.isLonely = std::min(one.item->weight, controlWeight(one.after, spread)) < notable;
  }
  std::ranges::stable_sort(patches, std::greater{},
                           [](const Fitted& one) { return std::abs(one.after); });
  return patches;
}

std::string listOf(const Patches& patches) {
  std::vector<std::string> texts;
  for (const Fitted& one : patches) {
    if (texts.size() < named) texts.push_back(one.text());
  }
  auto list = fmt::format("{}", fmt::join(texts, "; "));
  if (patches.size() <= named) return list;
  return list + fmt::format("; and {} more", patches.size() - named);
}

/// Of the patches that are not far off by themselves [m]; NaN for none.
double rmsOf(const Patches& patches) {
  double sum = 0.0, count = 0.0;
  for (const Fitted& one : patches) {
    if (one.isLonely) continue;
    sum += one.after * one.after;
    count += 1.0;
  }
  return std::sqrt(sum / count);
}

/// Patches that are worse than the rest on the whole.
Patches worstOf(const Patches& patches, double limit) {
  Patches worst;
  for (const Fitted& one : patches) {
    if (!one.isLonely && std::abs(one.after) > limit) worst.push_back(one);
  }
  return worst;
}

void warnOfLonely(const Patches& patches, DatumReport& datum) {
  Patches lonely;
  std::ranges::copy_if(patches, std::back_inserter(lonely), &Fitted::isLonely);
  if (lonely.empty()) return;
  datum.warnings.push_back(fmt::format(
      "Control that the adjusted strips miss by far more than the rest of it; check the survey, "
      "and what stands there: {}.",
      listOf(lonely)));
}

/// What the noise of the pairs alone would make of the medians of the patches, RMS [m]: a pair has
/// the noise of two planes, and the median of n values the variance π/2 σ²/n.
double expectedOf(const Patches& patches, double rmsOfPairs) {
  double sum = 0.0, count = 0.0;
  for (const Fitted& one : patches) {
    if (one.isLonely) continue;
    const auto number = static_cast<double>(std::max<std::size_t>(1, one.item->correspondences));
    sum += 0.25 * std::numbers::pi * rmsOfPairs * rmsOfPairs / number;
    count += 1.0;
  }
  return std::sqrt(sum / count);
}

void warnAgainstPairs(const Patches& patches, const Fit& pairs, const std::string& model,
                      DatumReport& datum) {
  constexpr double least = 0.015, factor = 1.5;  // [m]: control itself is surveyed with errors
  const double rms = rmsOf(patches);
  if (!(rms > std::max(least, factor * expectedOf(patches, pairs.rms)))) return;
  datum.warnings.push_back(fmt::format(
      "The {} model leaves control off the adjusted strips by {:.1f} cm (RMS of its patches; the "
      "pairs of strips fit to {:.1f} cm), more than noise would: the block is bent, or lies wrong, "
      "by that and more between the patches. The trajectories may drift in ways that the sections "
      "cannot take, or the control is of another datum. Worst: {}.",
      model, 100.0 * rms, 100.0 * pairs.rms, listOf(worstOf(patches, rms))));
}

void warnAgainstRoundBefore(const Patches& patches, const Patches& before, const std::string& model,
                            DatumReport& datum) {
  constexpr double least = 0.005, factor = 1.5;  // [m]
  const double now = rmsOf(patches), then = rmsOf(before);
  if (!(now > factor * then) || !(now > then + least)) return;
  datum.warnings.push_back(fmt::format(
      "The control fits the {} model worse than in the round before: {:.1f} cm, and {:.1f} cm "
      "then. Worst: {}.",
      model, 100.0 * now, 100.0 * then, listOf(worstOf(patches, now))));
}

}  // namespace

void addControlWarnings(const std::vector<RoundReport>& rounds, const std::string& model,
                        DatumReport& datum) {
  if (rounds.empty()) return;
  const Patches patches = patchesOf(rounds.back());
  if (patches.empty()) return;
  warnOfLonely(patches, datum);
  warnAgainstPairs(patches, rounds.back().adjustment->after.pairs, model, datum);
  if (rounds.size() < 2) return;
  warnAgainstRoundBefore(patches, patchesOf(rounds[rounds.size() - 2]), model, datum);
}

}  // namespace Velorn::Flights
