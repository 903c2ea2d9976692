// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Texts that came out of somebody's file, for a terminal.
#pragma once

#include <string>
#include <string_view>

#include "platform/Visibility.h"

namespace Plome {

/// What a terminal would obey instead of showing it, and bytes that are no UTF-8, as "\x1b": a name
/// in a file shall not clear a screen or hide a line. Line feeds and tabs stay, as does UTF-8. To
/// be called once, where the program writes to a terminal, on texts without commands of its own.
VELORN_PLATFORM_EXPORT std::string printable(std::string_view text);

/// The same for a value in a line or a table: line feeds and tabs are escaped as well.
VELORN_PLATFORM_EXPORT std::string printableOnOneLine(std::string_view text);

}  // namespace Plome
