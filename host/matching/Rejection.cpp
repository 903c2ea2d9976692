// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/matching/Rejection.h"

#include <algorithm>

#include "platform/orvek/Figures.h"

namespace Matching {
namespace {

constexpr double width = 3.0, leastNmad = 1e-3;
constexpr std::size_t enoughOfClass = 10, enoughOfPair = 5;
constexpr std::size_t classes = std::tuple_size_v<Funnels>;

std::size_t classOf(const Correspondence& pair) {
  return classIndexOf(pair.code);
}

/// A quantity of all correspondences and of those of each class.
template <typename Value>
struct Spreads {
  std::array<Spread, classes> own{};   ///< of the class alone
  std::array<Spread, classes> used{};  ///< that the class is judged by

  Spreads(const std::vector<Correspondence>& pairs, const Value& value) {
    std::array<std::vector<double>, classes> each;
    std::vector<double> all;
    for (const Correspondence& pair : pairs) {
      each[classOf(pair)].push_back(value(pair));
      all.push_back(value(pair));
    }
    const Spread together = spreadOf(std::move(all));
    for (std::size_t k = 0; k < classes; ++k) {
      const bool isEnough = each[k].size() >= enoughOfClass;
      own[k] = spreadOf(std::move(each[k]));
      used[k] = isEnough ? own[k] : together;
    }
  }

  /// How far above the median, in units of the limit.
  double excess(const Correspondence& pair, double value) const {
    const Spread& spread = used[classOf(pair)];
    return (value - spread.median) / (width * std::max(spread.nmad, leastNmad));
  }
};

template <typename IsUnlike>
void takeOut(std::vector<Correspondence>& pairs, Funnels& funnels, std::size_t Funnel::*counter,
             const IsUnlike& isUnlike) {
  std::erase_if(pairs, [&](const Correspondence& pair) {
    const bool isOut = isUnlike(pair);
    if (isOut) ++(funnels[classOf(pair)].*counter);
    return isOut;
  });
}

void rejectRough(std::vector<Correspondence>& pairs, Funnels& funnels) {
  const Spreads sideI(pairs, [](const Correspondence& pair) { return pair.roughnessI; });
  const Spreads sideJ(pairs, [](const Correspondence& pair) { return pair.roughnessJ; });
  takeOut(pairs, funnels, &Funnel::roughness, [&](const Correspondence& pair) {
    return sideI.excess(pair, pair.roughnessI) > 1.0 || sideJ.excess(pair, pair.roughnessJ) > 1.0;
  });
}

}  // namespace

Spread spreadOf(std::vector<double> values) {
  return {OrvekStatistic::quantileInPlace(values, 0.5), OrvekStatistic::nmadInPlace(values)};
}

void rejectUnlike(std::vector<Correspondence>& pairs, Funnels& funnels) {
  rejectRough(pairs, funnels);
  const Spreads distances(pairs, [](const Correspondence& pair) { return pair.distance; });
  for (std::size_t k = 0; k < classes; ++k) {
    funnels[k].median = distances.own[k].median;
    funnels[k].nmad = distances.own[k].nmad;
  }
  const bool areTooFew = pairs.size() < enoughOfPair;
  takeOut(pairs, funnels, &Funnel::outlier, [&](const Correspondence& pair) {
    return areTooFew || !(std::abs(distances.excess(pair, pair.distance)) <= 1.0);
  });
}

}  // namespace Matching
