// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The correspondence files of a run.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>

#include <velorn/CorrespondenceBlock.h>
#include <velorn/InputParameter.h>

namespace Velorn {

/// A file whose name says that it holds correspondences.
struct CorrespondenceFile {
  std::filesystem::path path;
  unsigned int firstStrip, secondStrip;  ///< file ids, as the name says
};

/// Entries of the correspondence folder, of every kind.
/// @throws std::filesystem::filesystem_error when the folder cannot be read
std::size_t entriesOfCorrespondenceFolder(const InputParameter& configuration);

/// Loads every file of the folder that is named c<first>_<second>.kx or
/// c<first>_<second>_GroundTruth.kx, one after the other in the order of their names, and hands
/// it on. Other names, and what is no regular file, are passed over. The configuration's progress
/// is told `text`, the number of regular files before, and the number of entries.
/// @param visit  returns empty, or a text that ends the walk
/// @return empty, or the first text of a block that cannot be loaded or of `visit`
/// @throws std::filesystem::filesystem_error; std::out_of_range for a number that does not fit
std::string walkCorrespondences(
    const InputParameter& configuration, const std::string& text,
    const std::function<std::string(const CorrespondenceFile&, const CorrespondenceBlock&)>& visit);

}  // namespace Velorn
