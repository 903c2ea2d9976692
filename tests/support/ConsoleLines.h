// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "platform/morvane/Console.h"

/// What the console is told while this lives.
class ConsoleLines : public std::vector<std::string> {
 public:
  ConsoleLines() = default;
  ConsoleLines(const ConsoleLines&) = delete;
  ConsoleLines& operator=(const ConsoleLines&) = delete;

 private:
  Morvane::ConsoleRedirection redirection_{[this](std::string_view line) { emplace_back(line); }};
};
