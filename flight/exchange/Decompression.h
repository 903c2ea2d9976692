// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Compressed point files are read through a program of the user's.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace Velorn::Flights {

/// Whether a file's header says that its points are compressed (LAZ).
/// @return false also for a file that is none of points, or cannot be read
bool isCompressed(const std::filesystem::path& file);

/// Runs a command, without a shell, that decompresses a file: of its words, parted by blanks, {in}
/// stands for the file and {out} for the LAS file to be made, such as "laszip -i {in} -o {out}".
/// @param whileRunning  called time and again meanwhile; what it throws ends the command and is
///                      passed on
/// @return the file made, <stem>.las in the folder, replaced only when the command succeeds
/// @throws Error that names the command: one without {in} or {out}, not found, failing, or making
///         no file
std::filesystem::path decompressed(const std::filesystem::path& file, const std::string& command,
                                   const std::filesystem::path& folder,
                                   const std::function<void()>& whileRunning);

}  // namespace Velorn::Flights
