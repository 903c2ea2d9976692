// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Room for more in an array that grows piece by piece.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Velorn {

/// Makes room for `more` values, exactly in an empty array, else for twice the present size at
/// least: many small pieces must not copy the array each time. After a failure the array is as
/// before.
template <typename T>
void growFor(std::vector<T>& array, std::size_t more) {
  if (array.capacity() - array.size() >= more) return;
  array.reserve(std::max(array.size() + more, 2 * array.size()));
}

}  // namespace Velorn
