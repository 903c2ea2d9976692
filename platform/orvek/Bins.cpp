// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/orvek/Bins.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <stdexcept>

#include <fmt/format.h>

namespace OrvekStatistic {
namespace {

bool isFloat(double value) {
  return std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max());
}

/// How many widths fill the range; a range of 0.3 has three bins of 0.1, although 0.3 / 0.1 < 3.
double binsIn(double range, double width) {
  const double whole = std::round(range / width);
  return std::abs(whole * width - range) <= 1e-9 * range ? whole : std::ceil(range / width);
}

std::vector<float> edgesOf(double lower, double upper, double width, std::size_t count) {
  std::vector<float> edges(count + 1);
  for (std::size_t i = 0; i < count; ++i) {
    edges[i] = static_cast<float>(lower + static_cast<double>(i) * width);
  }
  edges[count] = static_cast<float>(upper);
  return edges;
}

}  // namespace

Bins emptyBins(double lower, double upper, double binWidth) {
  const auto refused = [&](const char* fault) {
    return std::invalid_argument(fmt::format("OrvekStatistic: range {} to {} in bins of {}: {}",
                                             lower, upper, binWidth, fault));
  };
  if (!isFloat(lower) || !isFloat(upper) || !isFloat(binWidth)) {
    throw refused("these are not finite numbers in the range of float");
  }
  if (lower >= upper) throw refused("the lower bound must be less than the upper one");
  if (binWidth <= 0.0) throw refused("the bin width must be greater than zero");
  const double count = binsIn(upper - lower, binWidth);
  if (!(count <= static_cast<double>(mostBins))) throw refused("more than a million bins");

  Bins bins;
  bins.edges =
      edgesOf(lower, upper, binWidth, std::max<std::size_t>(1, static_cast<std::size_t>(count)));
  if (std::adjacent_find(bins.edges.begin(), bins.edges.end(), std::greater_equal<>()) !=
      bins.edges.end()) {
    throw refused("float values cannot tell bins of this width apart");
  }
  bins.counts.resize(bins.edges.size() - 1);
  return bins;
}

void countInto(Bins& bins, float value) {
  if (std::isnan(value) || bins.counts.empty()) return;
  const float first = bins.edges.front(), last = bins.edges.back();
  if (value < first) {
    ++bins.below;
  } else if (value > last) {
    ++bins.above;
  } else {
    // The mean width gives a guess that is a bin or two beside at most (rounded edges, a narrower
    // last bin); the edges decide.
    const std::size_t most = bins.counts.size() - 1;
    const double width =
        (static_cast<double>(last) - first) / static_cast<double>(bins.counts.size());
    auto bin =
        std::min(most, static_cast<std::size_t>((static_cast<double>(value) - first) / width));
    while (bin > 0 && value < bins.edges[bin]) --bin;
    while (bin < most && value >= bins.edges[bin + 1]) ++bin;
    ++bins.counts[bin];
  }
}

std::uint64_t totalOf(const Bins& bins) {
  return std::accumulate(bins.counts.begin(), bins.counts.end(), bins.below + bins.above);
}

}  // namespace OrvekStatistic
