// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The strip id file, as FileContainer::writeStripID writes it.
//
//     id: 0 file: /flight/strip_1.kx type: strip
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace Velorn {

/// File names, without folders, of strips by their ids.
using StripNames = std::map<std::uint32_t, std::string>;

/// Reads the strips of a file. No two files have one id, no two strips one file name.
/// @return empty, or "<file>: line <n>: <fault>"; `names` is then as before
std::string readStripIdFile(const std::filesystem::path& path, StripNames& names);

}  // namespace Velorn
