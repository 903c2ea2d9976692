// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The clock as a text that may stand in a file name.
#pragma once

#include <string>

#include "platform/Visibility.h"

namespace Plome {

/// Current local date and time as year, month, day, hour, minute, second joined by `separator`,
/// each with leading zeros: "2026_11_21_14_05_09". Holds digits and the separator only, sorts by
/// time, and does not depend on the locale. A separator that a file name may not hold (a blank,
/// '/', ':' and the like) is replaced by '_'.
VELORN_PLATFORM_EXPORT std::string currentDateAndTime(char separator);

}  // namespace Plome
