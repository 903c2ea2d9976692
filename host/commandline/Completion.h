// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Scripts that complete commands, options, their values and files where a command is typed.
#pragma once

#include <string>

#include "host/commandline/CommandTable.h"

namespace CommandLine {

/// Needs nothing but bash, from version 4 on.
std::string bashCompletion(const Command& program);

/// To be a file of $fpath, or to be sourced once the completion of zsh is on.
std::string zshCompletion(const Command& program);

}  // namespace CommandLine
