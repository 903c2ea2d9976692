// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/stochastics/DesignEffect.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

namespace Velorn {
namespace {

void checkSum(double value, const char* name) {
  if (!(value >= 0.0 && std::isfinite(value))) {
    throw std::invalid_argument(fmt::format("designEffectOf: the {} are {}", name, value));
  }
}

}  // namespace

DesignEffect designEffectOf(const ChunkScatter& scatter) {
  checkSum(scatter.squares, "squares");
  checkSum(scatter.gradients, "gradients");
  checkSum(scatter.expectations, "expectations");
  if (scatter.count == 0) return {};
  const auto count = static_cast<double>(scatter.count);
  const double expected = scatter.squares / count * scatter.expectations;
  const double factor = expected > 0.0 ? std::max(1.0, scatter.gradients / expected) : 1.0;
  return {factor, count / factor};
}

}  // namespace Velorn
