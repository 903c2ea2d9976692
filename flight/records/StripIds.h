// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The file that says which strip has which id.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace Velorn::Flights {

/// File names of strips, without folders, by the ids that the names of correspondence blocks use.
using StripNames = std::map<std::uint32_t, std::string>;

/// @throws Error for a file that cannot be read or has no strip
StripNames stripNamesIn(const std::filesystem::path& stripIds);

}  // namespace Velorn::Flights
