// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// From the structure of a container file to a bundle.
#pragma once

#include <filesystem>

#include "platform/strandel/Bundle.h"

namespace Strandel::Hdf5 {

/// @throws Fault "<object>: <what is wrong>", or without an object when the file as a whole cannot
/// be read
Bundle loadBundle(const std::filesystem::path& path);

}  // namespace Strandel::Hdf5
