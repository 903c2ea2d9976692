// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/Nearest.h"

#include <algorithm>
#include <numeric>

#include <fmt/format.h>

namespace CommandLine {

namespace {

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  for (char& letter : lower) {
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return lower;
}

}  // namespace

std::size_t editDistance(std::string_view first, std::string_view second) {
  // One row of the table per letter of the first text: to each beginning of the second.
  std::vector<std::size_t> row(second.size() + 1), above, twoAbove;
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= first.size(); ++i) {
    twoAbove = std::move(above);
    above = row;
    row[0] = i;
    for (std::size_t k = 1; k <= second.size(); ++k) {
      const std::size_t replaced = above[k - 1] + (first[i - 1] == second[k - 1] ? 0 : 1);
      row[k] = std::min({above[k] + 1, row[k - 1] + 1, replaced});
      const bool isSwap =
          i > 1 && k > 1 && first[i - 1] == second[k - 2] && first[i - 2] == second[k - 1];
      if (isSwap) row[k] = std::min(row[k], twoAbove[k - 2] + 1);
    }
  }
  return row.back();
}

std::string nearestOf(const std::vector<std::string>& names, std::string_view typed) {
  const std::string lower = lowerCase(typed);
  const std::string* nearest = nullptr;
  std::size_t smallest = 0;
  for (const auto& name : names) {
    const std::size_t longer = std::max(name.size(), lower.size());
    const std::size_t shorter = std::min(name.size(), lower.size());
    if (longer - shorter > longer / 3) continue;  // spares the table for a name of any length
    const std::size_t distance = editDistance(lower, lowerCase(name));
    if (distance > longer / 3 || (nearest && distance >= smallest)) continue;
    nearest = &name;
    smallest = distance;
  }
  if (nearest) return *nearest;
  const auto begun = std::ranges::find_if(names, [&lower](const std::string& name) {
    return lower.size() > 1 && name.starts_with(lower);
  });
  return begun == names.end() ? "" : *begun;
}

std::string didYouMean(const std::string& name) {
  return name.empty() ? "" : fmt::format("; did you mean {}?", name);
}

}  // namespace CommandLine
