// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The text of a selection expression, before it is parsed.
#pragma once

#include <cstddef>
#include <string>

namespace Velorn::Flights {

/// The words `and`, `or` and `not` as the parser's operators `&&`, `||` and `!`; every other
/// character keeps its place.
std::string withOperators(const std::string& text);

/// Refuses what parses and yet does not say what it seems to: a single `=`, which assigns, a
/// chain of comparisons such as 1 < a < 5, and lists of values.
/// @throws Error that shows the place
void refuseMisleading(const std::string& text);

/// @throws Error: "SelectionStr: <fault>", the text, and a caret under the byte at `place`
[[noreturn]] void throwFault(const std::string& text, const std::string& fault, std::size_t place);

}  // namespace Velorn::Flights
