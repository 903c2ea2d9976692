// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How the correction of the trajectory runs within one time section of a strip.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <velorn/Visibility.h>

namespace Velorn {

/// Model of the trajectory correction within one time section. `UNKNOWN` is what a text that names
/// no model is read as; the numbers index lists of the run configuration and stay as they are.
enum class Sec_Type : std::uint32_t { BIAS = 0, LINEAR = 1, SPLINE = 2, HYBRID = 3, UNKNOWN = 4 };

/// @return the enumerator's name, "Unknown" for every value above 3
VELORN_EXPORT std::string SecTypeToString(Sec_Type type);

/// @param text  an enumerator's name, exactly: no blanks, upper case
/// @return      `UNKNOWN` for any other text
VELORN_EXPORT Sec_Type stringToSecType(std::string_view text);

}  // namespace Velorn
