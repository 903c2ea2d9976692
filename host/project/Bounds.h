// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Bounds of a number that a user gives.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include <fmt/format.h>

/// Refuses, with both bounds, what is no number (NaN included) or lies beyond them.
inline CLI::Validator within(double low, double high, bool orZero = false) {
  return {[low, high, orZero](std::string& text) {
            double value = 0.0;
            const bool isNumber = CLI::detail::lexical_cast(text, value);
            if (isNumber && value >= low && value <= high) return std::string();
            if (isNumber && orZero && value == 0.0) return std::string();
            return fmt::format("{} is not a number from {} to {}", text, low, high);
          },
          ""};
}
