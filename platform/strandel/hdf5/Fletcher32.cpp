// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/Fletcher32.h"

#include <array>
#include <cstring>

namespace Strandel::Hdf5 {
namespace {

constexpr std::size_t lanes = 16;
constexpr std::size_t stepsPerBlock =
    256;  // the sums of sums stay below 65535 * 256 * 257 / 2 < 2^32
constexpr std::size_t wordsPerBlock = lanes * stepsPerBlock;
constexpr std::uint64_t modulus = 65535;

/// sum1 = sum of the words, sum2 = sum of all sum1 so far. A sum that is a multiple of the modulus
/// but not zero is written as 65535, which is what folding the carries gives.
struct Sums {
  std::uint64_t first = 0;
  std::uint64_t second = 0;
};

std::uint64_t reduced(std::uint64_t sum) {
  return sum == 0 ? 0 : (sum - 1) % modulus + 1;
}

/// Adds a block of words w_0 ... w_{m-1} as they lie in memory: sum2 grows by m sum1 + sum of (m -
/// i) w_i. Word i = 16 k + j is counted in lane j, whose own sum of sums b_j weighs it by K - k, so
/// that
///   sum of (m - i) w_i = 16 sum of b_j - sum of j a_j.
void addBlock(const unsigned char* bytes, Sums& sums) {
  std::array<std::uint32_t, lanes> a{}, b{};
  for (std::size_t step = 0; step < stepsPerBlock; ++step) {
    std::array<std::uint16_t, lanes> words;
    std::memcpy(words.data(), bytes + step * sizeof(words), sizeof(words));
    for (std::size_t lane = 0; lane < lanes; ++lane) {
      a[lane] += words[lane];
      b[lane] += a[lane];
    }
  }
  std::uint64_t total = 0, weighted = 0;
  for (std::size_t lane = 0; lane < lanes; ++lane) {
    total += a[lane];
    weighted += lanes * std::uint64_t{b[lane]} - lane * std::uint64_t{a[lane]};
  }
  sums.second = reduced(sums.second + wordsPerBlock * sums.first + weighted);
  sums.first = reduced(sums.first + total);
}

void addWord(std::uint64_t word, Sums& sums) {
  sums.first = reduced(sums.first + word);
  sums.second = reduced(sums.second + sums.first);
}

}  // namespace

std::uint32_t fletcher32(const void* data, std::size_t size) {
  const auto* bytes = static_cast<const unsigned char*>(data);
  Sums sums;
  for (; size >= 2 * wordsPerBlock; size -= 2 * wordsPerBlock, bytes += 2 * wordsPerBlock) {
    addBlock(bytes, sums);
  }
  for (; size >= 2; size -= 2, bytes += 2) {
    addWord(bytes[0] | static_cast<std::uint64_t>(bytes[1]) << 8U, sums);
  }
  if (size == 1) addWord(bytes[0], sums);
  // Swapping the bytes of a word multiplies it by 256 modulo 65535, so the words were summed as
  // they lay.
  sums.first = reduced(sums.first * 256);
  sums.second = reduced(sums.second * 256);
  return static_cast<std::uint32_t>(sums.second << 16U | sums.first);
}

}  // namespace Strandel::Hdf5
