// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The files that a run left in its root folder.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "flight/records/ModelFiles.h"

namespace Velorn::Flights::Comparison {

/// Those that summary.json names under "files" (paths from the root), else the newest parameter
/// file of the parameter folder with its companions.
/// @return empty when the run has none
/// @throws Error for a summary that names no files, or names ones that are missing
std::optional<ModelFiles> modelFilesOf(const std::filesystem::path& root);

/// File names of strips, without folders, by the ids that the names of correspondence blocks use.
using StripNames = std::map<std::uint32_t, std::string>;

/// @throws Error for a file that cannot be read or has no strip
StripNames stripNamesIn(const std::filesystem::path& stripIds);

}  // namespace Velorn::Flights::Comparison
