// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <fmt/format.h>

#include "platform/plome/Clock.h"
#include <velorn/TextHelpers.h>

namespace Velorn {

std::string formatElapsedTime(std::string_view name, double seconds) {
  return fmt::format("Time needed for {}: {:.6f} s or {:.2f} h", name, seconds, seconds / 3600);
}

std::string current_date_and_time(char separator) {
  return Plome::currentDateAndTime(separator);
}

}  // namespace Velorn
