// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Named single values beside the data: week numbers, EPSG codes, lever arms.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>

#include "platform/Visibility.h"
#include "platform/geomra/PhysicalSpace.h"

namespace Strandel {

/// An integer, a number, a text (UTF-8) or a point.
using Attribute = std::variant<std::int64_t, double, std::string, Geomra::PhysicalSpace::point>;

/// The attributes of one grid, chart or field. A reader that asks for one type gets nothing when
/// the attribute is missing or of another type, or when its value does not fit.
class VELORN_PLATFORM_EXPORT Attributes {
 public:
  void set(const std::string& name, Attribute value) { values_[name] = std::move(value); }
  void remove(const std::string& name) { values_.erase(name); }
  bool holds(const std::string& name) const { return values_.contains(name); }

  std::optional<std::int64_t> integer(const std::string& name) const;
  std::optional<std::uint32_t> unsigned32(const std::string& name) const;
  std::optional<double> real(const std::string& name) const;  ///< of an integer, too
  std::optional<std::string> text(const std::string& name) const;
  std::optional<Geomra::PhysicalSpace::point> point(const std::string& name) const;

  /// All of them, by name.
  const std::map<std::string, Attribute>& all() const { return values_; }

  friend bool operator==(const Attributes&, const Attributes&) = default;

 private:
  template <typename T>
  const T* find(const std::string& name) const;

  std::map<std::string, Attribute> values_;
};

}  // namespace Strandel
