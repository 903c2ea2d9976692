// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/Thinning.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <numeric>
#include <tuple>

#include "platform/geomra/Degree.h"
#include "platform/plome/SplitMix64.h"

namespace Velorn::Flights {
namespace {

using Geomra::degree;

struct Drawn {
  std::uint64_t stratumLot, stratum, lot;  // lots decide; the stratum itself parts equal lots
  std::uint32_t place;

  bool isOf(const Drawn& other) const { return stratum == other.stratum; }
};

/// Stratum by stratum, both the strata and the things of each in an order of chance.
std::vector<Drawn> drawn(const std::vector<std::uint64_t>& strata, std::uint64_t seed) {
  std::vector<Drawn> all;
  for (std::uint32_t k = 0; k < strata.size(); ++k) {
    all.push_back({derivedSeed(seed, 1, strata[k]), strata[k], derivedSeed(seed, 2, k), k});
  }
  std::sort(all.begin(), all.end(), [](const Drawn& a, const Drawn& b) {
    return std::tie(a.stratumLot, a.stratum, a.lot, a.place) <
           std::tie(b.stratumLot, b.stratum, b.lot, b.place);
  });
  return all;
}

/// How many things of each stratum there are, in the order in which they stand.
std::vector<std::size_t> sizesOf(const std::vector<Drawn>& all) {
  std::vector<std::size_t> sizes;
  for (std::size_t k = 0; k < all.size(); ++k) {
    if (k == 0 || !all[k].isOf(all[k - 1])) sizes.push_back(0);
    ++sizes.back();
  }
  return sizes;
}

}  // namespace

std::vector<std::size_t> waterFilled(const std::vector<std::size_t>& capacities,
                                     std::size_t total) {
  std::vector<std::size_t> order(capacities.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return capacities[a] < capacities[b]; });
  std::vector<std::size_t> shares(capacities.size());
  std::size_t vessels = capacities.size();
  for (const std::size_t k : order) {  // the smallest first: what it cannot hold, the others share
    shares[k] = std::min(capacities[k], total / vessels--);
    total -= shares[k];
  }
  return shares;
}

std::vector<std::uint32_t> thinned(const std::vector<std::uint64_t>& strata, std::size_t room,
                                   std::uint64_t seed) {
  std::vector<std::uint32_t> kept;
  const auto all = drawn(strata, seed);
  const auto sizes = sizesOf(all);
  const auto shares = waterFilled(sizes, room);
  std::size_t begin = 0;
  for (std::size_t s = 0; s < sizes.size(); begin += sizes[s++]) {
    for (std::size_t k = begin; k < begin + shares[s]; ++k) kept.push_back(all[k].place);
  }
  std::sort(kept.begin(), kept.end());
  return kept;
}

std::uint64_t stratumOf(std::uint8_t code, const Geomra::PhysicalSpace::vector& normal) {
  constexpr std::array<double, 3> limits{3.0 * degree, 10.0 * degree, 25.0 * degree};
  const double slope = std::atan2(std::hypot(normal.x, normal.y), normal.z);
  const auto band = static_cast<std::uint64_t>(
      std::upper_bound(limits.begin(), limits.end(), slope) - limits.begin());
  const std::uint64_t ofClass = std::uint64_t{100} * code;
  if (band == 0) return ofClass;
  const double turn = std::atan2(normal.x, normal.y) / (2.0 * std::numbers::pi) + 0.5;
  const auto sector = std::min(static_cast<std::uint64_t>(8.0 * turn), std::uint64_t{7});
  return ofClass + 10U * band + sector;
}

std::uint64_t derivedSeed(std::uint64_t seed, std::uint64_t first, std::uint64_t second) {
  using Plome::splitMix64;
  return splitMix64(splitMix64(splitMix64(seed) ^ first) ^ second);
}

}  // namespace Velorn::Flights
