// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Opening a container file, with what went wrong on the console.
#pragma once

#include <filesystem>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"

namespace Velorn {

/// The bundle in a file; empty, after a message on the console, when it cannot be loaded.
/// @param storage  may be null, which is told like a failed load
Strandel::BundlePtr loadedBundle(const std::filesystem::path& path,
                                 const Strandel::MyStorage* storage);

}  // namespace Velorn
