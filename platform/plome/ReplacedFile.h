// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A file that is written beside its target and takes its place whole, or not at all.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/Visibility.h"

namespace Plome {

/// Writes `target` anew without ever showing a half-written file under its name:
///
///     Plome::ReplacedFile file("strip.kx");      // creates nothing
///     writeSomething(file.temporary());          // a name in the same folder, ending in ".part"
///     std::string fault = file.replace();        // flush to disk, rename over the target, flush
///     the folder
///
/// Until replace() succeeds the target stays as it was; without it the destructor removes the
/// temporary. A process that is killed leaves its ".part" file behind, which nothing ever reads
/// (isTemporaryName tells it);
/// one that is only interrupted can call removeUnfinishedFiles. A target that is a symbolic link
/// stays one: the file it points to is replaced. The permissions of a file that is replaced are
/// kept.
class VELORN_PLATFORM_EXPORT ReplacedFile {
 public:
  /// @param ending  of the temporary's name after ".part", for a program that goes by it
  explicit ReplacedFile(const std::filesystem::path& target, std::string_view ending = {});
  ~ReplacedFile();
  ReplacedFile(const ReplacedFile&) = delete;
  ReplacedFile& operator=(const ReplacedFile&) = delete;

  const std::filesystem::path& temporary() const { return temporary_; }

  /// @param toDisk  false leaves the flushing to the system: the rename is still whole for other
  /// processes, but a
  ///                crash of the machine may lose the new content
  /// @return        empty, or "<target>: <fault>"; the target is then as before
  std::string replace(bool toDisk = true);

 private:
  std::filesystem::path target_;
  std::filesystem::path temporary_;
  bool replaced_ = false;
};

/// Writes `content` as the whole of `target`, by way of a ReplacedFile.
/// @return empty, or "<target>: <fault>"; the target is then as before
VELORN_PLATFORM_EXPORT std::string replaceFile(const std::filesystem::path& target,
                                               std::string_view content);

/// True for the name of a temporary, of whatever process. Where nobody else writes it was left by
/// one that was killed.
VELORN_PLATFORM_EXPORT bool isTemporaryName(std::string_view name);

/// Removes the temporaries of all ReplacedFiles of this process, and kills the programs that it
/// runs (Program.h). No file is replaced any more: every thread that tries to, and every one that
/// makes or abandons a ReplacedFile or waits for a program, waits for ever. For a host that ends
/// the process next; may be called again, from any thread, but not from a signal handler.
VELORN_PLATFORM_EXPORT void removeUnfinishedFiles();

}  // namespace Plome
