// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What `velorn help` and `--help` print, within the 80 columns of a terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/commandline/CommandTable.h"

namespace CommandLine {

/// @param call  how the command is called: "velorn adjust"
std::string helpText(const Command& command, const std::string& call);

/// Commands of the shell, joined by &&, as lines that can be copied together: one command per line,
/// and more where it is long, parted before options and never in quotes.
std::vector<std::string> wrappedShell(std::string_view commands, std::size_t width);

}  // namespace CommandLine
