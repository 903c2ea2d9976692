// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The one table of what a field may hold.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/geomra/PhysicalSpace.h"

namespace Strandel {

/// Type of the values of a field; the order is that of valueTypes.
enum class ValueType {
  Double,
  Point,
  Vector,
  UInt8,
  UInt16,
  UInt32,
  UInt64,
  Int8,
  Int16,
  Int32,
  Int64
};

/// One row of the table.
struct ValueTypeInfo {
  ValueType type;
  std::string_view name;   ///< as the file's attribute "value_type" says it
  std::size_t components;  ///< 1, or 3 for points and vectors
  std::size_t bytes;       ///< of one component
  bool floating;           ///< IEEE 754; otherwise an integer
  bool isSigned;
};

inline constexpr std::array valueTypes{
    ValueTypeInfo{ValueType::Double, "double", 1, 8, true, true},
    ValueTypeInfo{ValueType::Point, "point", 3, 8, true, true},
    ValueTypeInfo{ValueType::Vector, "vector", 3, 8, true, true},
    ValueTypeInfo{ValueType::UInt8, "uint8", 1, 1, false, false},
    ValueTypeInfo{ValueType::UInt16, "uint16", 1, 2, false, false},
    ValueTypeInfo{ValueType::UInt32, "uint32", 1, 4, false, false},
    ValueTypeInfo{ValueType::UInt64, "uint64", 1, 8, false, false},
    ValueTypeInfo{ValueType::Int8, "int8", 1, 1, false, true},
    ValueTypeInfo{ValueType::Int16, "int16", 1, 2, false, true},
    ValueTypeInfo{ValueType::Int32, "int32", 1, 4, false, true},
    ValueTypeInfo{ValueType::Int64, "int64", 1, 8, false, true}};

constexpr const ValueTypeInfo& infoOf(ValueType type) {
  return valueTypes[static_cast<std::size_t>(type)];
}

/// Bytes of one value with all its components.
constexpr std::size_t rowBytes(ValueType type) {
  return infoOf(type).components * infoOf(type).bytes;
}

constexpr std::optional<ValueType> valueTypeNamed(std::string_view name) {
  for (const auto& info : valueTypes) {
    if (info.name == name) return info.type;
  }
  return std::nullopt;
}

/// The C++ type of a field's values, one of those below.
template <typename T>
concept Value = std::same_as<T, double> || std::same_as<T, Geomra::PhysicalSpace::point> ||
    std::same_as<T, Geomra::PhysicalSpace::vector> || std::same_as<T, std::uint8_t> ||
    std::same_as<T, std::uint16_t> || std::same_as<T, std::uint32_t> ||
    std::same_as<T, std::uint64_t> || std::same_as<T, std::int8_t> ||
    std::same_as<T, std::int16_t> || std::same_as<T, std::int32_t> || std::same_as<T, std::int64_t>;

template <Value T>
constexpr ValueType valueTypeOf() {
  using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
  if constexpr (std::same_as<T, double>) return ValueType::Double;
  if constexpr (std::same_as<T, point>) return ValueType::Point;
  if constexpr (std::same_as<T, vector>) return ValueType::Vector;
  if constexpr (std::same_as<T, std::uint8_t>) return ValueType::UInt8;
  if constexpr (std::same_as<T, std::uint16_t>) return ValueType::UInt16;
  if constexpr (std::same_as<T, std::uint32_t>) return ValueType::UInt32;
  if constexpr (std::same_as<T, std::uint64_t>) return ValueType::UInt64;
  if constexpr (std::same_as<T, std::int8_t>) return ValueType::Int8;
  if constexpr (std::same_as<T, std::int16_t>) return ValueType::Int16;
  if constexpr (std::same_as<T, std::int32_t>) return ValueType::Int32;
  if constexpr (std::same_as<T, std::int64_t>) return ValueType::Int64;
}

}  // namespace Strandel
