// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The folder of the statistics: what is drawn into it, and the texts that are removed again. What
// fails is told on the console; no page is worth ending a run.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/orvek/Statistic.h"

namespace Velorn {

/// Makes the folder, and those above it, where it is missing.
/// @return false, after "Invalid directory: <folder>" on the console, when there is no such folder
bool makeStatisticFolder(const std::filesystem::path& folder);

/// Writes "stat_<name>.txt" and "hist_<name>.txt" (platform/orvek/StatisticFiles.h), and draws
/// "<name>.pdf" from them.
void plotDifferences(const std::filesystem::path& folder, const std::string& name,
                     OrvekStatistic::Statistic& differences);

/// Removes the regular files of the folder whose whole names match "hist_.*\.txt" or
/// "stat_.*\.txt", whoever wrote them. Links, folders and what lies in them stay.
void removeStatisticTexts(const std::filesystem::path& folder);

/// Draws one value per strip against its number.
/// @param offsets  [m]
void plotQuantiles(const std::filesystem::path& pdf, const std::string& title,
                   const std::vector<double>& offsets);

}  // namespace Velorn
