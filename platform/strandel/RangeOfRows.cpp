// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/RangeOfRows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Strandel {
namespace {

constexpr std::size_t blockBytes = 1 << 20;  // a chunk, which is read as a whole anyway

template <typename T>
bool isNotANumber(T value) {
  if constexpr (std::is_floating_point_v<T>) return std::isnan(value);
  return false;
}

/// Smallest and largest value per lane; value i of a block is in lane i, so that a lane stays with
/// one of one or three components, and the compiler can keep the lanes in vector registers.
template <typename T>
struct Lanes {
  static constexpr std::size_t count = 24;
  std::array<T, count> low;
  std::array<T, count> high;
  std::array<bool, count> invalid{};

  Lanes(const T* row, std::size_t components) {
    for (std::size_t lane = 0; lane < count; ++lane)
      low[lane] = high[lane] = row[lane % components];
  }
  void add(const T* values, std::size_t until) {
    for (std::size_t lane = 0; lane < until; ++lane) {
      const T value = values[lane];
      low[lane] = value < low[lane] ? value : low[lane];
      high[lane] = high[lane] < value ? value : high[lane];
      invalid[lane] = invalid[lane] || isNotANumber(value);
    }
  }
};

/// Grows \p range by \p count > 0 rows.
template <typename T>
void grow(const void* rows, std::size_t count, std::size_t components, ValueRange& range) {
  const auto* values = static_cast<const T*>(rows);
  Lanes<T> lanes(values, components);
  std::size_t left = count * components;
  for (; left >= Lanes<T>::count; left -= Lanes<T>::count, values += Lanes<T>::count) {
    lanes.add(values, Lanes<T>::count);
  }
  lanes.add(values, left);
  for (std::size_t lane = 0; lane < Lanes<T>::count; ++lane) {
    double& minimum = range.minimum[lane % components];
    double& maximum = range.maximum[lane % components];
    if (lanes.invalid[lane] || isNotANumber(lanes.low[lane]) || std::isnan(minimum)) {
      minimum = maximum = std::numeric_limits<double>::quiet_NaN();
    } else {
      minimum = std::min(minimum, static_cast<double>(lanes.low[lane]));
      maximum = std::max(maximum, static_cast<double>(lanes.high[lane]));
    }
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
  const std::size_t blockRows = std::min(blockBytes / rowBytes(type_), column.rows());
  std::vector<double> block(blockRows * rowBytes(type_) / sizeof(double) + 1);
  for (std::size_t first = 0; first < column.rows(); first += blockRows) {
    const std::size_t count = std::min(blockRows, column.rows() - first);
    if (auto fault = column.read(first, count, block.data()); !fault.empty()) return fault;
    add(block.data(), count);
  }
  return {};
}

}  // namespace Strandel
