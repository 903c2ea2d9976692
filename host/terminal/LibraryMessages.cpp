// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/terminal/LibraryMessages.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 3> beginningsOfSteps{
    "setSection # ",
    " CeresOptimization::check: Number of correspondences: ", "\n7) DONE FILLING CERES: "};

bool tellsAStep(std::string_view line) {
  return std::ranges::any_of(beginningsOfSteps,
                             [line](std::string_view step) { return line.starts_with(step); });
}

}  // namespace

LibraryMessages::LibraryMessages(Progress& progress, bool quiet)
    : redirection_([&progress, quiet](std::string_view line) {
        if (!quiet || !tellsAStep(line)) progress.message(line);
      }) {}
