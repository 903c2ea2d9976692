// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The median of very many values, where half a step between two of them is of no matter.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace Velorn::Flights {

/// Of an even number of values the upper one of the middle two.
/// @return NaN for no values
inline float upperMedianOf(std::vector<float> values) {
  if (values.empty()) return std::numeric_limits<float>::quiet_NaN();
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

}  // namespace Velorn::Flights
