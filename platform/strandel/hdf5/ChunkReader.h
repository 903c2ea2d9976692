// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Reads the chunks of a dataset as they lie in the file and undoes their filters here. It is faster
// than the library, which copies every chunk twice and sums it word by word, and safer: the library
// trusts that a filter gives back a whole chunk and reads beyond the end of a shorter one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/strandel/ValueType.h"
#include "platform/strandel/hdf5/Library.h"

namespace Strandel::Hdf5 {

/// One step of what was done to a chunk before it was stored.
struct Filter {
  H5Z_filter_t id = H5Z_FILTER_ERROR;
  unsigned setting = 0;  ///< its first one: the bytes of an element for shuffle
};

/// How a dataset is cut into chunks.
struct ChunkLayout {
  hsize_t rows = 0;
  hsize_t columns = 0;
  std::vector<Filter> filters;  ///< in the order in which they were applied
  bool partialUnfiltered =
      false;  ///< chunks that reach beyond the last row were stored as they are

  bool deflated() const;
};

/// @param properties  creation properties of a chunked dataset
/// @throws Fault for a filter other than shuffle, deflate and fletcher32, or one that spares the
/// last chunk
ChunkLayout chunkLayoutOf(hid_t properties);

/// The most that deflate shrinks, zlib's own figure.
inline constexpr std::size_t mostDeflated = 1032;

class ChunkReader {
 public:
  /// @param rows       of the dataset [rows] or [rows][3]
  /// @param fileBytes  size of the file, more than which no chunk can take
  ChunkReader(hid_t dataset, ValueType type, std::size_t rows, const ChunkLayout& layout,
              std::size_t fileBytes);

  /// @throws Fault when a chunk with one of these rows was never stored (the library reads zeros
  /// there), or is too small for what it should hold; takes no memory
  void check(std::size_t first, std::size_t count) const;

  /// @throws Fault when a chunk is damaged
  void read(std::size_t first, std::size_t count, char* out);

  /// Copies all chunks as they lie to a dataset that was created like this one.
  /// @throws Fault when a chunk is missing or its checksum is wrong
  void copyTo(hid_t dataset);

 private:
  std::size_t storedBytes(hsize_t row, hsize_t column) const;
  std::uint32_t loadStored(hsize_t row, hsize_t column);
  void load(hsize_t row, hsize_t column);
  void copyChunk(hsize_t row, hsize_t column, hid_t dataset);
  [[noreturn]] void refuse(const std::string& fault) const;
  void undo(const Filter& filter);
  void checkSum() const;
  void undoChecksum();
  void undoDeflate();
  void undoShuffle(std::size_t elementBytes);
  void copyRows(std::size_t within, std::size_t count, hsize_t column, char* out) const;

  hid_t dataset_;
  const ValueTypeInfo& info_;
  std::size_t rows_;
  const ChunkLayout& layout_;
  std::size_t fileBytes_;
  std::size_t chunkBytes_;
  bool convert_;
  hsize_t row_ = 0;  // where the chunk begins
  std::vector<char> chunk_;
  std::vector<char> other_;  // the chunk before a filter was undone
};

}  // namespace Strandel::Hdf5
