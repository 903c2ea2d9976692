// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The section file: one line per section.
//
//     StripID: 0, sectionID: 0, t: 1000.000000000000000, type: LINEAR
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <velorn/Section.h>

namespace Velorn {

/// The line of a section, with its line feed.
std::string sectionLine(const Section& section);

/// Reads the sections of a file: numbered from 0, by strip, and within a strip by start.
/// @return empty, or "<file>: line <n>: <fault>"; `sections` is then as before
std::string readSectionFile(const std::filesystem::path& path, std::vector<Section>& sections);

}  // namespace Velorn
