// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Loads bundles from container files and saves them.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "platform/Visibility.h"

namespace Strandel {

class Bundle;
using BundlePtr = std::shared_ptr<Bundle>;

/// What every storage offers; its operations return an empty text or one message that names file
/// and object.
class VELORN_PLATFORM_EXPORT StorageInterface {
 public:
  StorageInterface();
  virtual ~StorageInterface();
  StorageInterface(const StorageInterface&) = delete;
  StorageInterface& operator=(const StorageInterface&) = delete;

  /// Reads the structure of a container file into `bundle`, replacing what it held; the data of its
  /// fields are read when they are asked for. After a failure `bundle` is as before.
  virtual std::string load(const std::filesystem::path& path, Bundle& bundle) const = 0;

  /// Writes `bundle` to `path`: beside it, flushed, renamed. After a failure the file is as before.
  /// The path may be that of the file the bundle was loaded from; data that nobody changed are
  /// copied without being decoded.
  /// @param mode  "w": the file must not exist yet; "wd": an existing one is replaced
  virtual std::string save(Bundle& bundle, const std::filesystem::path& path,
                           const std::string& mode) const = 0;
};

/// The storage of .kx container files. It holds settings only, and serves any number of files, one
/// after the other or from several threads.
class VELORN_PLATFORM_EXPORT MyStorage final : public StorageInterface {
 public:
  /// Values that are not listed are refused by load and save, with a message that names the value.
  /// @param compression  the storage mode of newly written data: 0 plain, 1 shuffled and deflated
  /// @param protection   of newly written data: 0 with a checksum per chunk, 1 without
  /// @param flushing     0: a saved file is on the disk before it takes its place; 1: left to the
  /// system (scratch files)
  /// @param version      version of the file format to write: 1
  MyStorage(int compression, int protection, int flushing, int version);
  ~MyStorage() override;

  std::string load(const std::filesystem::path& path, Bundle& bundle) const override;
  std::string save(Bundle& bundle, const std::filesystem::path& path,
                   const std::string& mode) const override;

 private:
  std::string unknownSetting() const;

  int compression_;
  int protection_;
  int flushing_;
  int version_;
};

}  // namespace Strandel
