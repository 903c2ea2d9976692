// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Project files as version 0.1 wrote them.
#pragma once

#include <string>
#include <string_view>

/// The same in TOML, line by line: words get the quotes that they went without, and what stands
/// there several times becomes a list. A line that was wrong in that form stays as it is.
std::string tomlOfFirstForm(std::string_view text);
