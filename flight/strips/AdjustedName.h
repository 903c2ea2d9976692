// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The names of adjusted strips: <strip>_SA.kx.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Velorn::Flights {

/// What the library appends to a strip's name without its ending.
constexpr std::string_view adjustedEnding = "_SA";

inline std::string adjustedNameOf(const std::filesystem::path& strip) {
  return strip.stem().string().append(adjustedEnding) + ".kx";
}

inline bool isAdjustedName(const std::filesystem::path& file) {
  return file.extension() == ".kx" && file.stem().string().ends_with(adjustedEnding);
}

/// The name of the strip without any ending; that of a file that is no adjusted strip stays.
inline std::string strippedStem(const std::filesystem::path& container) {
  std::string stem = container.stem().string();
  if (stem.size() > adjustedEnding.size() && stem.ends_with(adjustedEnding)) {
    stem.resize(stem.size() - adjustedEnding.size());
  }
  return stem;
}

}  // namespace Velorn::Flights
