// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/trajectory/TimeIndex.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace Velorn {
namespace {

constexpr std::size_t entriesPerCell = 2;  // on average; a cell of 2 costs 2 bytes per record

bool isBefore(const TimeIndex::Entry& a, const TimeIndex::Entry& b) {
  return a.time < b.time;
}

bool isBeforeOrOlder(const TimeIndex::Entry& a, const TimeIndex::Entry& b) {
  return a.time < b.time || (a.time == b.time && a.record < b.record);
}

}  // namespace

void TimeIndex::append(const std::vector<double>& times, std::uint64_t firstRecord) {
  growFor(times.size());
  for (const double time : times) entries_.push_back({time, firstRecord++});
}

void TimeIndex::dropFrom(std::uint64_t record) {
  while (!entries_.empty() && entries_.back().record >= record) entries_.pop_back();
}

void TimeIndex::build() {
  if (!isAscending()) {
    std::sort(entries_.begin(), entries_.end(), isBeforeOrOlder);
    keepLastOfEqualTimes();
  }
  makeCells();
}

/// Without equal times, that is.
bool TimeIndex::isAscending() const {
  const auto isNotBefore = [](const Entry& a, const Entry& b) { return !isBefore(a, b); };
  return std::adjacent_find(entries_.begin(), entries_.end(), isNotBefore) == entries_.end();
}

void TimeIndex::keepLastOfEqualTimes() {
  std::size_t kept = 0;
  for (const Entry entry : entries_) {
    if (kept > 0 && entries_[kept - 1].time == entry.time) --kept;
    entries_[kept++] = entry;
  }
  entries_.resize(kept);
}

void TimeIndex::makeCells() {
  cellStarts_.clear();
  const std::size_t count = entries_.size();
  if (count < entriesPerCell || count > std::numeric_limits<std::uint32_t>::max()) return;
  const std::size_t cells = count / entriesPerCell;
  cellsPerSecond_ = static_cast<double>(cells) / (last().time - first().time);
  if (!std::isnormal(cellsPerSecond_)) return;  // times too far apart or too close for a double
  try {
    cellStarts_.resize(cells + 1, static_cast<std::uint32_t>(count));
  } catch (const std::bad_alloc&) {
    return;  // slower, but as right
  }
  // cellOf takes part in the search with the same rounding, so that the borders agree exactly.
  std::size_t cell = 0;
  cellStarts_[0] = 0;
  for (std::size_t i = 0; i < count; ++i) {
    for (const std::size_t own = cellOf(entries_[i].time); cell < own;) {
      cellStarts_[++cell] = static_cast<std::uint32_t>(i);
    }
  }
}

/// Never falls when t grows, whatever is rounded: a stamp in a lower cell than t is below t, one in
/// a higher cell above.
/// @param t  between the first and the last time stamp; there must be cells
std::size_t TimeIndex::cellOf(double t) const {
  const auto cell = static_cast<std::size_t>((t - first().time) * cellsPerSecond_);
  return std::min(cell, cellStarts_.size() - 2);  // the last stamp ends the last cell
}

std::size_t TimeIndex::lowerBound(double t) const {
  if (entries_.empty() || !(t > first().time)) return 0;
  if (t > last().time) return entries_.size();
  std::size_t from = 0, to = entries_.size();
  if (!cellStarts_.empty()) {
    const std::size_t cell = cellOf(t);
    from = cellStarts_[cell];
    to = cellStarts_[cell + 1];
  }
  const Entry* const found =
      std::lower_bound(entries_.data() + from, entries_.data() + to, Entry{t, 0}, isBefore);
  return static_cast<std::size_t>(found - entries_.data());
}

std::size_t TimeIndex::bytes() const {
  return entries_.size() * sizeof(Entry) + cellStarts_.size() * sizeof(std::uint32_t);
}

}  // namespace Velorn
