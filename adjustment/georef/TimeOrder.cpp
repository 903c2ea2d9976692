// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/TimeOrder.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace Velorn {
namespace {

struct Numbered {
  std::uint32_t key, number;
};

/// The times as whole numbers, up to 2^32 − 1 over their range.
std::vector<Numbered> numbered(const double* times, std::size_t count) {
  double first = std::numeric_limits<double>::infinity(), last = -first;
  for (std::size_t i = 0; i < count; ++i) {
    if (!std::isfinite(times[i])) continue;
    first = std::min(first, times[i]);
    last = std::max(last, times[i]);
  }
  constexpr double most = std::numeric_limits<std::uint32_t>::max();
  const double scale = last > first ? most / (last - first) : 0.0;
  std::vector<Numbered> all(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double key = (times[i] - first) * scale;
    const bool isKey = key > 0.0 && key <= most;  // not of what is not finite
    all[i] = {isKey ? static_cast<std::uint32_t>(key) : 0, static_cast<std::uint32_t>(i)};
  }
  return all;
}

/// A pass of a radix sort, by the eleven bits from `shift` on.
void sortByDigit(const std::vector<Numbered>& from, std::vector<Numbered>& to, unsigned shift) {
  constexpr std::size_t digits = 1U << 11U;
  const auto digit = [shift](const Numbered& n) { return (n.key >> shift) % digits; };
  std::array<std::uint32_t, digits> places{};
  for (const Numbered& n : from) ++places[digit(n)];
  std::uint32_t place = 0;
  for (auto& p : places) place += std::exchange(p, place);
  for (const Numbered& n : from) to[places[digit(n)]++] = n;
}

/// Three doubles, which a library's function would be called for.
void copyTriple(const double* from, double* to) {
  const double x = from[0], y = from[1], z = from[2];
  to[0] = x;
  to[1] = y;
  to[2] = z;
}

}  // namespace

bool isOutOfOrder(const double* times, std::size_t count) {
  constexpr std::size_t places = 64, neighbours = 64;
  const std::size_t apart = std::max(count / places, neighbours);
  std::size_t falls = 0, seen = 0;
  for (std::size_t first = 0; first < count; first += apart) {
    const std::size_t end = std::min(first + neighbours, count);
    for (std::size_t i = first + 1; i < end; ++i) falls += times[i] < times[i - 1] ? 1 : 0;
    seen += end - first;
  }
  return 16 * falls > seen;
}

std::vector<std::uint32_t> orderOfTimes(const double* times, std::size_t count) {
  std::vector<Numbered> sorted = numbered(times, count), other(count);
  for (unsigned shift = 0; shift < 32; shift += 11) {
    sortByDigit(sorted, other, shift);
    sorted.swap(other);
  }
  std::vector<std::uint32_t> order(count);
  std::transform(sorted.begin(), sorted.end(), order.begin(),
                 [](const Numbered& n) { return n.number; });
  return order;
}

GatheredPoints::GatheredPoints(const PointBatch& from, const std::uint32_t* numbers,
                               std::size_t count)
    : from_(from), numbers_(numbers), count_(count) {
  for (std::size_t k = 0; k < count_; ++k) {
    copyTriple(from_.points + 3 * std::size_t{numbers_[k]}, points_ + 3 * k);
    times_[k] = from_.times[numbers_[k]];
  }
}

PointBatch GatheredPoints::batch() {
  return {points_, times_, results_, from_.directions ? directions_ : nullptr, count_};
}

void GatheredPoints::returnResults() {
  for (std::size_t k = 0; k < count_; ++k) {
    const std::size_t place = 3 * std::size_t{numbers_[k]};
    copyTriple(results_ + 3 * k, from_.results + place);
    if (from_.directions) copyTriple(directions_ + 3 * k, from_.directions + place);
  }
}

}  // namespace Velorn
