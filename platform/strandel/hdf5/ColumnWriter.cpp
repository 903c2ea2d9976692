// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/ColumnWriter.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/strandel/hdf5/AttributeFile.h"
#include "platform/strandel/hdf5/Fletcher32.h"
#include "platform/strandel/hdf5/Format.h"
#include "platform/strandel/hdf5/Types.h"

namespace Strandel::Hdf5 {
namespace {

constexpr std::size_t chunkBytes =
    1 << 20;  // stays in the processor's cache while it is summed and copied

constexpr unsigned thoroughly = 4, quickly = 1;  // levels of deflate

/// Chunks of the same size, as the file holds the last one filled up to a whole one.
hsize_t chunkRowsOf(const ColumnSource& column) {
  const std::size_t most = chunkBytes / rowBytes(column.valueType());
  const std::size_t chunks = (column.rows() + most - 1) / most;
  return (column.rows() + chunks - 1) / chunks;
}

/// Integers of points repeat or ascend, and nearly vanish in little time; of doubles a third goes,
/// in ten times the time that writing them takes.
bool isDeflated(const ColumnSource& column, const ColumnStyle& style) {
  return style.compressed || !infoOf(column.valueType()).floating;
}

/// Filters that may be left out would be where memory is short, and the same data become other
/// bytes.
void deflate(hid_t properties, unsigned int level) {
  checked(H5Pset_filter(properties, H5Z_FILTER_SHUFFLE, H5Z_FLAG_MANDATORY, 0, nullptr),
          notWritten);
  checked(H5Pset_filter(properties, H5Z_FILTER_DEFLATE, H5Z_FLAG_MANDATORY, 1, &level), notWritten);
}

Handle creationOf(const ColumnSource* column, int rank, const ColumnStyle& style) {
  Handle properties = checked(H5Pcreate(H5P_DATASET_CREATE), H5Pclose, notWritten);
  setCommonProperties(properties.id());
  if (!column || column->rows() == 0) return properties;
  const hsize_t chunk[2] = {chunkRowsOf(*column), 3};
  checked(H5Pset_chunk(properties.id(), rank, chunk), notWritten);
  if (isDeflated(*column, style)) {
    deflate(properties.id(), style.compressed ? thoroughly : quickly);
  }
  if (style.checksums) checked(H5Pset_fletcher32(properties.id()), notWritten);
  return properties;
}

Handle spaceOf(const ColumnSource* column, int rank) {
  if (!column) return checked(H5Screate(H5S_NULL), H5Sclose, notWritten);
  const hsize_t dimensions[2] = {column->rows(), 3};
  return checked(H5Screate_simple(rank, dimensions, nullptr), H5Sclose, notWritten);
}

/// Writes a column chunk by chunk, from memory or from another file.
class ChunkWriter {
 public:
  ChunkWriter(hid_t dataset, const ColumnSource& column, const ColumnStyle& style)
      : dataset_(dataset),
        column_(column),
        style_(style),
        rowBytes_(rowBytes(column.valueType())),
        chunkRows_(chunkRowsOf(column)),
        chunk_(chunkRows_ * rowBytes_ + (style.checksums ? sizeof(std::uint32_t) : 0)) {}

  void write(const WriteState& state, RangeOfRows& range) {
    for (std::size_t first = 0; first < column_.rows() && state.error == 0; first += chunkRows_) {
      const std::size_t rows = std::min<std::size_t>(chunkRows_, column_.rows() - first);
      if (auto fault = column_.read(first, rows, chunk_.data()); !fault.empty()) throw Fault(fault);
      range.add(chunk_.data(), rows);
      if (isDeflated(column_, style_)) {
        writeByLibrary(first, rows);
      } else {
        writeWhole(first, rows);
      }
    }
  }

 private:
  /// Hands over the chunk as it will lie in the file, with its checksum: the library's own way
  /// copies and sums it several times more slowly.
  void writeWhole(hsize_t first, std::size_t rows) {
    const std::size_t bytes = chunkRows_ * rowBytes_;
    std::memset(chunk_.data() + rows * rowBytes_, 0, bytes - rows * rowBytes_);
    if (style_.checksums) {
      const std::uint32_t checksum = fletcher32(chunk_.data(), bytes);
      std::memcpy(chunk_.data() + bytes, &checksum, sizeof(checksum));
    }
    const hsize_t offset[2] = {first, 0};
    checked(H5Dwrite_chunk(dataset_, H5P_DEFAULT, 0, offset, chunk_.size(), chunk_.data()),
            notWritten);
  }

  void writeByLibrary(hsize_t first, hsize_t rows) {
    const auto components = infoOf(column_.valueType()).components;
    const hsize_t start[2] = {first, 0}, size[2] = {rows, components};
    const Handle file = checked(H5Dget_space(dataset_), H5Sclose, notWritten);
    checked(H5Sselect_hyperslab(file.id(), H5S_SELECT_SET, start, nullptr, size, nullptr),
            notWritten);
    const Handle memory =
        checked(H5Screate_simple(components == 1 ? 1 : 2, size, nullptr), H5Sclose, notWritten);
    checked(H5Dwrite(dataset_, componentType(column_.valueType()), memory.id(), file.id(),
                     H5P_DEFAULT, chunk_.data()),
            notWritten);
  }

  hid_t dataset_;
  const ColumnSource& column_;
  const ColumnStyle& style_;
  std::size_t rowBytes_;
  std::size_t chunkRows_;
  std::vector<char> chunk_;
};

}  // namespace

void writeColumn(hid_t group, const std::string& name, ValueType type, const ColumnSource* column,
                 const ColumnStyle& style, const WriteState& state, RangeOfRows& range) {
  const int rank = infoOf(type).components == 1 ? 1 : 2;
  const Handle properties = creationOf(column, rank, style);
  const Handle space = spaceOf(column, rank);
  const Handle dataset = checked(H5Dcreate2(group, name.c_str(), componentType(type), space.id(),
                                            H5P_DEFAULT, properties.id(), H5P_DEFAULT),
                                 H5Dclose, notWritten);
  if (column && column->rows() > 0) ChunkWriter(dataset.id(), *column, style).write(state, range);
}

}  // namespace Strandel::Hdf5
