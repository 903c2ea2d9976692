// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The page that `man velorn` shows.
#pragma once

#include <string>

#include "host/commandline/CommandTable.h"

namespace CommandLine {

/// In the language of man(7). Options that several commands share are told once.
/// @param version  "0.1.0"
std::string manPage(const Command& program, const std::string& version);

}  // namespace CommandLine
