// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/Rejection.h"

#include <algorithm>
#include <array>
#include <map>

#include "flight/matching/Thinning.h"
#include "platform/orvek/Figures.h"

namespace Velorn::Flights {
namespace {

constexpr double width = 3.0, leastNmad = 1e-3;
constexpr std::size_t enoughOfGroup = 10, enoughOfPair = 5;
constexpr std::size_t classCount = std::tuple_size_v<Funnels>;

std::size_t classOf(const Correspondence& pair) {
  return classIndexOf(pair.code);
}

std::uint64_t groupOf(const Correspondence& pair, Alike alike) {
  return alike == Alike::ofClass ? classOf(pair) : stratumOf(pair.code, pair.normalI);
}

/// A quantity of all correspondences and of those of each group.
template <typename Value>
class Spreads {
 public:
  Spreads(const std::vector<Correspondence>& pairs, Alike alike, const Value& value)
      : alike_(alike) {
    std::map<std::uint64_t, std::vector<double>> each;
    std::vector<double> all;
    for (const Correspondence& pair : pairs) {
      each[groupOf(pair, alike)].push_back(value(pair));
      all.push_back(value(pair));
    }
    const Spread together = spreadOf(std::move(all));
    for (auto& [group, values] : each) {
      const bool isEnough = values.size() >= enoughOfGroup;
      used_[group] = isEnough ? spreadOf(std::move(values)) : together;
    }
  }

  /// How far above the median, in units of the limit.
  double excess(const Correspondence& pair, double value) const {
    const Spread& spread = used_.at(groupOf(pair, alike_));
    return (value - spread.median) / (width * std::max(spread.nmad, leastNmad));
  }

 private:
  Alike alike_;
  std::map<std::uint64_t, Spread> used_;  // that the group is judged by
};

template <typename IsUnlike>
void takeOut(std::vector<Correspondence>& pairs, CandidateTally& tally, Fate fate,
             const IsUnlike& isUnlike) {
  std::erase_if(pairs, [&](const Correspondence& pair) {
    const bool isOut = isUnlike(pair);
    if (isOut) tally.judge(pair, fate);
    return isOut;
  });
}

/// Median and NMAD of the distances of each class.
void describe(const std::vector<Correspondence>& pairs, Funnels& funnels) {
  std::array<std::vector<double>, classCount> each;
  for (const Correspondence& pair : pairs) each[classOf(pair)].push_back(pair.distance);
  for (std::size_t k = 0; k < classCount; ++k) {
    const Spread spread = spreadOf(std::move(each[k]));
    funnels[k].median = spread.median;
    funnels[k].nmad = spread.nmad;
  }
}

}  // namespace

Spread spreadOf(std::vector<double> values) {
  return {OrvekStatistic::quantileInPlace(values, 0.5), OrvekStatistic::nmadInPlace(values)};
}

void rejectRough(std::vector<Correspondence>& pairs, CandidateTally& tally) {
  const Spreads sideI(pairs, Alike::ofClass,
                      [](const Correspondence& pair) { return pair.roughnessI; });
  const Spreads sideJ(pairs, Alike::ofClass,
                      [](const Correspondence& pair) { return pair.roughnessJ; });
  takeOut(pairs, tally, Fate::roughness, [&](const Correspondence& pair) {
    return sideI.excess(pair, pair.roughnessI) > 1.0 || sideJ.excess(pair, pair.roughnessJ) > 1.0;
  });
  describe(pairs, tally.funnels());
}

void rejectUnlike(std::vector<Correspondence>& pairs, CandidateTally& tally, Alike alike) {
  rejectRough(pairs, tally);
  const Spreads distances(pairs, alike, [](const Correspondence& pair) { return pair.distance; });
  const bool areTooFew = pairs.size() < enoughOfPair;
  takeOut(pairs, tally, Fate::outlier, [&](const Correspondence& pair) {
    return areTooFew || !(std::abs(distances.excess(pair, pair.distance)) <= 1.0);
  });
}

}  // namespace Velorn::Flights
