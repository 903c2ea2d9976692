// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What an adjustment leaves for those who use its result.
#pragma once

#include <filesystem>

namespace Velorn::Flights {

/// The three files of an adjusted model.
struct ModelFiles {
  std::filesystem::path sections, parameters, stripIds;
};

}  // namespace Velorn::Flights
