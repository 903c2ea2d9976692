// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Draws a page by a gnuplot script, and the words and numbers such a script is made of.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/Visibility.h"

namespace OrvekPDF {

/// Any text as a quoted string of a gnuplot script that shows just this text. Every character but
/// letters and blanks is written as its bytes' octal numbers, so that no text can end the
/// string or mean anything to gnuplot. Control characters (line feeds among them) become blanks,
/// bytes that are no UTF-8 the replacement character.
/// @param mostCharacters  a longer text is cut, "…" being its last character
VELORN_PLATFORM_EXPORT std::string quoted(std::string_view utf8, std::size_t mostCharacters);

/// The integer with a blank between groups of three digits.
VELORN_PLATFORM_EXPORT std::string grouped(unsigned long long number);

/// The smallest of 1, 2, 5, 10, 20, ... times a power of ten, that is at least `least` (> 0).
VELORN_PLATFORM_EXPORT double roundStep(double least);

/// Beginning of every script: the terminal, the paper and what all plots have in common.
/// @param width, height  of the page [mm]
std::string pageHead(int width, int height, std::string_view title);

/// End of a script for a page without data: empty axes, `message` in their middle.
std::string emptyPlot(std::string_view message);

/// Runs gnuplot with the script and replaces `pdf` by the page it draws.
/// @return empty, or "<pdf>: <fault>", with what gnuplot said; `pdf` is then as before and nothing
///         is left beside it
VELORN_PLATFORM_EXPORT std::string drawPdf(
    std::string_view script, const std::filesystem::path& pdf,
    std::chrono::milliseconds timeLimit = std::chrono::seconds(60));

/// Writes "Warning: <fault>" on the console.
/// @return the fault
std::string warned(std::string fault);

}  // namespace OrvekPDF
