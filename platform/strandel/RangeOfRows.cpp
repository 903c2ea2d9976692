// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/RangeOfRows.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Strandel {
namespace {

constexpr std::size_t blockRows = 1 << 16;

template <typename T>
bool isNotANumber(T value) {
  if constexpr (std::is_floating_point_v<T>) return std::isnan(value);
  return false;
}

/// Range of one component of `count` > 0 rows.
template <typename T>
void growComponent(const T* first, std::size_t count, std::size_t stride, double& minimum,
                   double& maximum) {
  T low = *first, high = *first;
  bool invalid = false;
  for (std::size_t i = 0; i < count; ++i) {
    const T value = first[i * stride];
    low = value < low ? value : low;
    high = high < value ? value : high;
    invalid |= isNotANumber(value);
  }
  if (invalid || std::isnan(minimum)) {
    minimum = maximum = std::numeric_limits<double>::quiet_NaN();
    return;
  }
  minimum = std::min(minimum, static_cast<double>(low));
  maximum = std::max(maximum, static_cast<double>(high));
}

template <typename T>
void grow(const void* rows, std::size_t count, std::size_t components, ValueRange& range) {
  const auto* values = static_cast<const T*>(rows);
  for (std::size_t c = 0; c < components; ++c) {
    growComponent(values + c, count, components, range.minimum[c], range.maximum[c]);
  }
}

ValueRange nothingYet(std::size_t components) {
  ValueRange range;
  for (std::size_t c = 0; c < components; ++c) {
    range.minimum[c] = std::numeric_limits<double>::infinity();
    range.maximum[c] = -std::numeric_limits<double>::infinity();
  }
  return range;
}

}  // namespace

void RangeOfRows::add(const void* rows, std::size_t count) {
  if (count == 0) return;
  const std::size_t components = infoOf(type_).components;
  if (!range_) range_ = nothingYet(components);
  switch (type_) {
    case ValueType::Double:
    case ValueType::Point:
    case ValueType::Vector:
      return grow<double>(rows, count, components, *range_);
    case ValueType::UInt8:
      return grow<std::uint8_t>(rows, count, 1, *range_);
    case ValueType::UInt16:
      return grow<std::uint16_t>(rows, count, 1, *range_);
    case ValueType::UInt32:
      return grow<std::uint32_t>(rows, count, 1, *range_);
    case ValueType::UInt64:
      return grow<std::uint64_t>(rows, count, 1, *range_);
    case ValueType::Int8:
      return grow<std::int8_t>(rows, count, 1, *range_);
    case ValueType::Int16:
      return grow<std::int16_t>(rows, count, 1, *range_);
    case ValueType::Int32:
      return grow<std::int32_t>(rows, count, 1, *range_);
    case ValueType::Int64:
      return grow<std::int64_t>(rows, count, 1, *range_);
  }
}

std::string RangeOfRows::add(const ColumnSource& column) {
  if (const void* rows = column.inMemory()) {
    add(rows, column.rows());
    return {};
  }
  std::vector<double> block(std::min(blockRows, column.rows()) * infoOf(type_).components);
  for (std::size_t first = 0; first < column.rows(); first += blockRows) {
    const std::size_t count = std::min(blockRows, column.rows() - first);
    if (auto fault = column.read(first, count, block.data()); !fault.empty()) return fault;
    add(block.data(), count);
  }
  return {};
}

}  // namespace Strandel
