// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Time stamps and durations as texts.
#pragma once

#include <string>
#include <string_view>

#include <velorn/Visibility.h>

namespace Velorn {

/// "Time needed for <name>: <seconds> s or <hours> h", with six and two decimals, whatever the
/// locale.
/// @param seconds  duration [s]
VELORN_EXPORT std::string formatElapsedTime(std::string_view name, double seconds);

/// Current local date and time, year first, its parts joined by `separator`. The text may stand in
/// a file name: a separator that may not is replaced by '_'.
VELORN_EXPORT std::string current_date_and_time(char separator);

}  // namespace Velorn
