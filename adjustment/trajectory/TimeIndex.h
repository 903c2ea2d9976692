// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// An ordered map from time stamps to record numbers, filled once and then only searched: one sorted
// array, and a table that says where in it every cell of time begins.
//
//     index.append(times, 0);
//     index.build();
//     const std::size_t place = index.lowerBound(t);
//
// A search looks into one cell of the table and then among the two or so stamps of that cell. Times
// that crowd in few cells are found by halving the crowd.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "adjustment/trajectory/Growth.h"

namespace Velorn {

/// Distinct time stamps in ascending order, each with the number of its record. Searches may run at
/// the same time; append and build may not run beside anything.
class TimeIndex {
 public:
  struct Entry {
    double time;  ///< [s]
    std::uint64_t record;
  };

  /// Adds the records firstRecord, firstRecord + 1, ... with these times, in any order; numbers
  /// must be higher than those added before. Nothing is found by them until the next build.
  /// @param times  [s], finite
  /// @throws std::bad_alloc; the index is then as before
  void append(const std::vector<double>& times, std::uint64_t firstRecord);

  /// Makes room for so many records more.
  /// @throws std::bad_alloc; the index is then as before
  void growFor(std::size_t records) { Velorn::growFor(entries_, records); }

  /// Takes back the records from this number on; there must have been no build since they were
  /// added.
  void dropFrom(std::uint64_t record);

  /// Sorts what was added unless it is in order, and of equal times keeps the last record.
  void build();

  std::size_t size() const { return entries_.size(); }
  const Entry& operator[](std::size_t place) const { return entries_[place]; }
  const Entry& first() const { return entries_.front(); }
  const Entry& last() const { return entries_.back(); }

  /// Place of the first time stamp that is not below t; size() when all are. 0 for NaN.
  std::size_t lowerBound(double t) const;

  /// Memory of entries and table [bytes].
  std::size_t bytes() const;

 private:
  bool isAscending() const;
  void keepLastOfEqualTimes();
  void makeCells();
  std::size_t cellOf(double t) const;

  std::vector<Entry> entries_;
  // Entry cellStarts_[c] is the first in cell c or beyond; one more than cells. Empty: no table.
  std::vector<std::uint32_t> cellStarts_;
  double cellsPerSecond_ = 0.0;
};

}  // namespace Velorn
