// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a run left in its root folder for an export.
#pragma once

#include <filesystem>
#include <vector>

namespace Velorn::Flights {

/// The adjusted strips of a folder, <strip>_SA.kx, in the order of their names.
/// @throws Error that names the folder when it has none
std::vector<std::filesystem::path> adjustedStripsIn(const std::filesystem::path& folder);

/// The trajectory containers that the newest adjustment of a run recorded.
/// @return empty when none did
/// @throws Error for one that is missing
std::vector<std::filesystem::path> recordedTrajectories(const std::filesystem::path& root);

}  // namespace Velorn::Flights
