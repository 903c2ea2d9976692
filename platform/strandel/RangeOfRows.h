// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Smallest and largest value of columns of any type. An implementation header of the room.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "platform/strandel/ColumnSource.h"
#include "platform/strandel/Field.h"

namespace Strandel {

/// Grows by rows; NaN as ValueRange says.
class RangeOfRows {
 public:
  explicit RangeOfRows(ValueType type) : type_(type) {}

  void add(const void* rows, std::size_t count);

  /// Adds a whole column, read in blocks when it is in a file.
  /// @return empty, or why it could not be read
  std::string add(const ColumnSource& column);

  std::optional<ValueRange> result() const { return range_; }

 private:
  ValueType type_;
  std::optional<ValueRange> range_;
};

}  // namespace Strandel
