// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <array>

#include <velorn/SectionType.h>

namespace Velorn {
namespace {

constexpr std::array<std::string_view, 4> names{"BIAS", "LINEAR", "SPLINE", "HYBRID"};

}  // namespace

std::string SecTypeToString(Sec_Type type) {
  const auto index = static_cast<std::uint32_t>(type);
  return std::string(index < names.size() ? names[index] : "Unknown");
}

Sec_Type stringToSecType(std::string_view text) {
  for (std::uint32_t index = 0; index < names.size(); ++index) {
    if (names[index] == text) return static_cast<Sec_Type>(index);
  }
  return Sec_Type::UNKNOWN;
}

}  // namespace Velorn
