// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The two text files of a Statistic: one word and one number a line, '#' begins a comment. Numbers
// are in the shortest form that reads back to the same bits, whatever the locale.
#pragma once

#include <filesystem>
#include <string>

#include "platform/Visibility.h"
#include "platform/orvek/Statistic.h"

namespace OrvekStatistic {

/// Lines "<figure> <number>", for example "mean 0.0125"; "nan" is not known.
VELORN_PLATFORM_EXPORT std::string summaryText(const Summary& summary);

/// Lines "below <count>", "above <count>", "bins <n>", then n lines "<lower> <upper> <count>".
VELORN_PLATFORM_EXPORT std::string histogramText(const Bins& bins);

/// Read what the functions above wrote. A file that is damaged, incomplete or of another kind is
/// refused; figures that a summary file has beyond the known ones are passed over.
/// @return empty, or "<path>: <fault>"; the second argument is then as before
VELORN_PLATFORM_EXPORT std::string readSummary(const std::filesystem::path& file, Summary& summary);
VELORN_PLATFORM_EXPORT std::string readHistogram(const std::filesystem::path& file, Bins& bins);

}  // namespace OrvekStatistic
