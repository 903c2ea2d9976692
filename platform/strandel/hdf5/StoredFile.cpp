// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/StoredFile.h"

#include <cerrno>
#include <system_error>

#include <unistd.h>

#include "platform/plome/SystemFault.h"
#include "platform/strandel/Node.h"
#include "platform/strandel/hdf5/Driver.h"

namespace Strandel {

std::filesystem::path Node::sourceFile() const {
  return stored_ ? stored_->file->path() : std::filesystem::path();
}

}  // namespace Strandel

namespace Strandel::Hdf5 {
namespace {

namespace fs = std::filesystem;

/// Looks before it opens: a pipe would make the opening wait.
std::size_t sizeOfRegularFile(const fs::path& path) {
  std::error_code error;
  const auto status = fs::status(path, error);
  if (error) throw Fault(error.message());
  if (fs::is_directory(status)) throw Fault("is a folder, not a container file");
  if (!fs::is_regular_file(status)) throw Fault("is not a regular file");
  const auto size = fs::file_size(path, error);
  if (error) throw Fault(error.message());
  if (access(path.c_str(), R_OK) != 0) throw Fault(Plome::systemFault(errno));
  return size;
}

}  // namespace

StoredFile::StoredFile(fs::path path) : path_(std::move(path)), bytes_(sizeOfRegularFile(path_)) {
  const Session session;
  const Handle access = accessForReading();
  file_ = checked(H5Fopen(path_.c_str(), H5F_ACC_RDONLY, access.id()), H5Fclose,
                  "is not a readable container file (HDF5), or it is damaged");
}

StoredFile::~StoredFile() {
  const Session session;
  file_.reset();
}

}  // namespace Strandel::Hdf5
