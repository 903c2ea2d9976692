// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// From a bundle to a container file.
#pragma once

#include <filesystem>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/hdf5/ColumnWriter.h"

namespace Strandel::Hdf5 {

/// Writes `bundle` as the new file `path`.
/// @throws Fault  "<object>: <what is wrong>"; the file is then worthless
void saveBundle(const Bundle& bundle, const std::filesystem::path& path, const ColumnStyle& style);

}  // namespace Strandel::Hdf5
