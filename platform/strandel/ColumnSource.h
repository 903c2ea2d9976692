// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where the values of one fragment are: in memory, or in a file. An implementation header of the
// room.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "platform/strandel/ValueType.h"

namespace Strandel {

/// The values of one fragment of one field, row by row.
class ColumnSource {
 public:
  ColumnSource(ValueType type, std::size_t rows) : type_(type), rows_(rows) {}
  virtual ~ColumnSource() = default;
  ColumnSource(const ColumnSource&) = delete;
  ColumnSource& operator=(const ColumnSource&) = delete;

  ValueType valueType() const { return type_; }
  std::size_t rows() const { return rows_; }

  /// What can be told of rows [first, first + count) without taking memory for them.
  /// @return empty, or why they cannot be read, with file and object
  virtual std::string check(std::size_t /*first*/, std::size_t /*count*/) const { return {}; }

  /// Copies rows [first, first + count) to `out`; the caller has checked that they exist.
  /// @return empty, or what is wrong, with file and object
  virtual std::string read(std::size_t first, std::size_t count, void* out) const = 0;

  /// The rows as one array when they are in memory, else null.
  virtual const void* inMemory() const { return nullptr; }

 private:
  ValueType type_;
  std::size_t rows_;
};

/// Values that somebody set.
template <Value T>
class MemoryColumn final : public ColumnSource {
 public:
  explicit MemoryColumn(std::shared_ptr<const std::vector<T>> values)
      : ColumnSource(valueTypeOf<T>(), values->size()), values_(std::move(values)) {}

  std::string read(std::size_t first, std::size_t count, void* out) const override {
    if (count > 0) std::memcpy(out, values_->data() + first, count * sizeof(T));
    return {};
  }
  const void* inMemory() const override { return values_->data(); }
  const std::shared_ptr<const std::vector<T>>& values() const { return values_; }

 private:
  std::shared_ptr<const std::vector<T>> values_;
};

}  // namespace Strandel
