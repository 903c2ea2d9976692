// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Results for people, on standard output.
#pragma once

#include <cstdio>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "platform/plome/Printable.h"

/// Prints as fmt::print does, what a terminal would obey shown escaped. Not for JSON, which has
/// escapes of its own.
template <typename... Values>
void printResult(fmt::format_string<Values...> format, Values&&... values) {
  const std::string text = Plome::printable(fmt::format(format, std::forward<Values>(values)...));
  std::fwrite(text.data(), 1, text.size(), stdout);
}
