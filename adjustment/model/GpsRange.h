// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// First and last GPS time of a strip's container.
#pragma once

#include <filesystem>
#include <string>

#include <velorn/InputParameter.h>

namespace Velorn {

/// First and last GPS time [s].
struct GpsRange {
  double first = 0.0;
  double last = 0.0;
};

/// Reads the stored range of the GPS times where the file has it, else the GPS times; nothing else.
/// @param parameter  the file is opened through its Storage
/// @param range      receives 0 <= first < last, finite, at least a microsecond apart
/// @return empty, or "SolveParameters::getGPSRange: <fault>" with the path; `range` is then as
///         before. What the storage has to say about it goes to the console.
std::string getGPSRange(const std::filesystem::path& path, const InputParameter& parameter,
                        GpsRange& range);

}  // namespace Velorn
