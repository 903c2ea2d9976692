// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Bytes of files whose records are doubles.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <vector>

/// The lowest byte of each value first, whatever the machine.
template <std::size_t N>
std::string bytesOf(const std::vector<std::array<double, N>>& records) {
  std::string bytes;
  for (const auto& record : records) {
    for (const double value : record) {
      const auto bits = std::bit_cast<std::uint64_t>(value);
      for (unsigned i = 0; i < 8; ++i) bytes += static_cast<char>(bits >> (8 * i) & 0xFFU);
    }
  }
  return bytes;
}

/// The highest byte of each value first instead.
inline std::string reversedValues(std::string bytes) {
  for (auto value = bytes.begin(); value != bytes.end(); value += 8) {
    std::reverse(value, value + 8);
  }
  return bytes;
}

/// Bytes of some records with another value in the second one.
template <std::size_t N>
std::string bytesWith(std::vector<std::array<double, N>> records, std::size_t place, double value) {
  records.at(1).at(place) = value;
  return bytesOf(records);
}
