// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The values of one fragment of one field in a file.
#pragma once

#include <memory>
#include <string>

#include "platform/strandel/ColumnSource.h"
#include "platform/strandel/hdf5/StoredFile.h"

namespace Strandel::Hdf5 {

/// A dataset [n] or [n][3]. Its header has been checked; its values are read and checked when they
/// are asked for.
class StoredColumn final : public ColumnSource {
 public:
  StoredColumn(std::shared_ptr<const StoredFile> file, std::string object, ValueType type,
               std::size_t rows)
      : ColumnSource(type, rows), file_(std::move(file)), object_(std::move(object)) {}

  std::string check(std::size_t first, std::size_t count) const override;
  std::string read(std::size_t first, std::size_t count, void* out) const override;

  /// Copies values that lie in chunks to a new dataset, as they lie, once their checksums are
  /// checked.
  /// @return false, and nothing is done, when they lie as one piece
  /// @throws Fault
  bool copyChunks(hid_t group, const std::string& name) const;

  /// Copies the dataset's attributes to that of `name` in `group`.
  void copyAttributesTo(hid_t group, const std::string& name) const;

 private:
  /// Calls action(dataset, layout); whatever goes wrong becomes one text.
  template <typename Action>
  std::string guarded(const Action& action) const;

  std::shared_ptr<const StoredFile> file_;
  std::string object_;
};

/// Checks the header of a dataset, from which nothing is allocated: type, rank, and that the file
/// is large enough for what it claims.
/// @return its source; nothing for a dataset without a dataspace, which stands for an absent chunk
/// @throws Fault without the object's name
std::shared_ptr<const StoredColumn> openColumn(const std::shared_ptr<const StoredFile>& file,
                                               const std::string& object, ValueType type);

}  // namespace Strandel::Hdf5
