// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What is said of a call that is not understood.
#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace CommandLine {

/// A word that the parser did not know comes before all else that it missed, which often follows
/// from it, with the nearest name that there is.
std::string misuseText(const CLI::App& program, const CLI::ParseError& error);

/// "adjsut: no such command; did you mean adjust?"
std::string noSuchCommand(const CLI::App& program, const std::string& typed);

}  // namespace CommandLine
