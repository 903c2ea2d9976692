// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Takes a line of a text file apart, from its beginning to its end.
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Velorn {

/// What has not been taken yet of a line. Nothing is skipped, no locale is asked.
class Scanner {
 public:
  explicit Scanner(std::string_view line) : rest_(line) {}

  std::string_view rest() const { return rest_; }

  /// Takes `text` when the rest begins with it.
  bool take(std::string_view text) {
    if (!rest_.starts_with(text)) return false;
    rest_.remove_prefix(text.size());
    return true;
  }

  /// Takes a decimal number of digits alone.
  std::optional<std::uint32_t> takeUnsigned() {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    if (error != std::errc()) return std::nullopt;
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    return value;
  }

  /// Takes a finite number with exactly 15 decimals, as the files hold it: one that was cut off or
  /// touched by hand is not taken for another one.
  std::optional<double> takeNumber() {
    double value = 0.0;
    const char* const begin = rest_.data();
    const auto [end, error] =
        std::from_chars(begin, begin + rest_.size(), value, std::chars_format::fixed);
    if (error != std::errc()) return std::nullopt;
    const std::string_view taken(begin, static_cast<std::size_t>(end - begin));
    constexpr std::size_t decimals = 15;
    if (taken.size() < decimals + 2 || taken.find('.') != taken.size() - decimals - 1) {
      return std::nullopt;  // "inf" and "nan" have no point either
    }
    rest_.remove_prefix(taken.size());
    return value;
  }

 private:
  std::string_view rest_;
};

}  // namespace Velorn
