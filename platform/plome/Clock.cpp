// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/plome/Clock.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <string_view>

namespace Plome {
namespace {

bool isSafeInFileNames(char character) {
  constexpr std::string_view safe = "_-.,+=~@";
  return safe.find(character) != std::string_view::npos || (character >= '0' && character <= '9') ||
         (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

}  // namespace

std::string currentDateAndTime(char separator) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  const char s = isSafeInFileNames(separator) ? separator : '_';
  std::array<char, 96> text{};  // room for six ints at their longest
  std::snprintf(text.data(), text.size(), "%04d%c%02d%c%02d%c%02d%c%02d%c%02d",
                local.tm_year + 1900, s, local.tm_mon + 1, s, local.tm_mday, s, local.tm_hour, s,
                local.tm_min, s, local.tm_sec);
  return text.data();
}

}  // namespace Plome
