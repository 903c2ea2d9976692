// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/Attributes.h"

#include <limits>

namespace Strandel {

template <typename T>
const T* Attributes::find(const std::string& name) const {
  const auto found = values_.find(name);
  return found == values_.end() ? nullptr : std::get_if<T>(&found->second);
}

std::optional<std::int64_t> Attributes::integer(const std::string& name) const {
  const auto* value = find<std::int64_t>(name);
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::uint32_t> Attributes::unsigned32(const std::string& name) const {
  const auto value = integer(name);
  if (!value || *value < 0 || *value > std::numeric_limits<std::uint32_t>::max()) return {};
  return static_cast<std::uint32_t>(*value);
}

std::optional<double> Attributes::real(const std::string& name) const {
  if (const auto* value = find<double>(name)) return *value;
  if (const auto value = integer(name)) return static_cast<double>(*value);
  return {};
}

std::optional<std::string> Attributes::text(const std::string& name) const {
  const auto* value = find<std::string>(name);
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<Geomra::PhysicalSpace::point> Attributes::point(const std::string& name) const {
  const auto* value = find<Geomra::PhysicalSpace::point>(name);
  return value ? std::optional(*value) : std::nullopt;
}

}  // namespace Strandel
