// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One side of a block from its grid and back.
#pragma once

#include <filesystem>
#include <string>

#include <velorn/CorrespondenceBlock.h>

namespace Velorn {

/// Builds a side from a grid, fragment after fragment.
/// @param file  for messages
/// @return empty, or what is missing or wrong; `side` is then as far as it was built
std::string loadSide(const Strandel::GridPtr& grid, const std::filesystem::path& file,
                     SphericalBeingData& side);

/// Puts the columns, shared and not copied, and the week number into the side's grid, as one
/// fragment.
/// @return empty, or what the field says
std::string storeSide(const SphericalBeingData& side);

}  // namespace Velorn
