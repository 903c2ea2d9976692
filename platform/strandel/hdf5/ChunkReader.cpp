// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/ChunkReader.h"

#include <algorithm>
#include <cstring>

#include <fmt/format.h>
#include <zlib.h>

#include "platform/strandel/hdf5/Fletcher32.h"
#include "platform/strandel/hdf5/Format.h"
#include "platform/strandel/hdf5/Types.h"

namespace Strandel::Hdf5 {
namespace {

constexpr hsize_t mostValues = hsize_t{1} << 32;  // of a chunk, the format's own limit in bytes

void checkKnown(H5Z_filter_t filter) {
  if (filter != H5Z_FILTER_SHUFFLE && filter != H5Z_FILTER_DEFLATE &&
      filter != H5Z_FILTER_FLETCHER32) {
    throw Fault(fmt::format(
        "stored with the filter {}; shuffle, deflate and fletcher32 are read (h5repack converts)",
        filter));
  }
}

bool liesAsInMemory(hid_t dataset, ValueType type) {
  const Handle stored = checked(H5Dget_type(dataset), H5Tclose, unreadable);
  return H5Tequal(stored.id(), componentType(type)) > 0;
}

}  // namespace

bool ChunkLayout::deflated() const {
  return std::any_of(filters.begin(), filters.end(),
                     [](const Filter& filter) { return filter.id == H5Z_FILTER_DEFLATE; });
}

ChunkLayout chunkLayoutOf(hid_t properties) {
  ChunkLayout layout;
  hsize_t sizes[H5S_MAX_RANK] = {};
  const int rank = checked(H5Pget_chunk(properties, H5S_MAX_RANK, sizes), unreadable);
  layout.rows = std::max<hsize_t>(sizes[0], 1);
  layout.columns = rank > 1 ? std::max<hsize_t>(sizes[1], 1) : 1;
  if (layout.rows > mostValues || layout.columns > mostValues / layout.rows) {
    throw Fault(fmt::format("claims chunks of [{}][{}] values", layout.rows, layout.columns));
  }
  unsigned options = 0;
  checked(H5Pget_chunk_opts(properties, &options), unreadable);
  if ((options & H5D_CHUNK_DONT_FILTER_PARTIAL_CHUNKS) != 0) {
    throw Fault(
        "stored with filters that spare the last chunk, which is not read (h5repack converts)");
  }
  const int filters = checked(H5Pget_nfilters(properties), unreadable);
  for (int i = 0; i < filters; ++i) {
    Filter filter;
    unsigned flags = 0, flagsOfFilter = 0;
    std::size_t settings = 1;
    filter.id = H5Pget_filter2(properties, static_cast<unsigned>(i), &flags, &settings,
                               &filter.setting, 0, nullptr, &flagsOfFilter);
    checkKnown(filter.id);
    layout.filters.push_back(filter);
  }
  return layout;
}

ChunkReader::ChunkReader(hid_t dataset, ValueType type, std::size_t rows, const ChunkLayout& layout,
                         std::size_t fileBytes)
    : dataset_(dataset),
      info_(infoOf(type)),
      rows_(rows),
      layout_(layout),
      fileBytes_(fileBytes),
      chunkBytes_(layout.rows * layout.columns * info_.bytes),
      convert_(!liesAsInMemory(dataset, type)) {}

void ChunkReader::check(std::size_t first, std::size_t count) const {
  for (hsize_t row = first - first % layout_.rows; row < first + count; row += layout_.rows) {
    for (hsize_t column = 0; column < info_.components; column += layout_.columns) {
      storedBytes(row, column);
    }
  }
}

void ChunkReader::read(std::size_t first, std::size_t count, char* out) {
  const std::size_t rowBytes = info_.components * info_.bytes;
  while (count > 0) {
    const std::size_t within = first % layout_.rows;
    const std::size_t rows = std::min<std::size_t>(count, layout_.rows - within);
    for (hsize_t column = 0; column < info_.components; column += layout_.columns) {
      load(first - within, column);
      copyRows(within, rows, column, out);
    }
    out += rows * rowBytes;
    first += rows;
    count -= rows;
  }
}

void ChunkReader::copyTo(hid_t dataset) {
  for (hsize_t row = 0; row < rows_; row += layout_.rows) {
    for (hsize_t column = 0; column < info_.components; column += layout_.columns) {
      copyChunk(row, column, dataset);
    }
  }
}

void ChunkReader::copyChunk(hsize_t row, hsize_t column, hid_t dataset) {
  const std::uint32_t skipped = loadStored(row, column);
  if (!layout_.filters.empty() && layout_.filters.back().id == H5Z_FILTER_FLETCHER32 &&
      (skipped >> (layout_.filters.size() - 1) & 1U) == 0) {
    checkSum();
  }
  const hsize_t offset[2] = {row, column};
  checked(H5Dwrite_chunk(dataset, H5P_DEFAULT, skipped, offset, chunk_.size(), chunk_.data()),
          "cannot be written");
}

std::size_t ChunkReader::storedBytes(hsize_t row, hsize_t column) const {
  const hsize_t offset[2] = {row, column};
  hsize_t stored = 0;
  if (H5Dget_chunk_storage_size(dataset_, offset, &stored) < 0) {
    throw Fault(fmt::format("the values from row {} on are missing{}", row, reason()));
  }
  if (stored == 0) throw Fault(fmt::format("the values from row {} on were never written", row));
  const hsize_t most = layout_.deflated() ? stored * mostDeflated : stored;
  if (stored > fileBytes_ || chunkBytes_ > most) {
    throw Fault(fmt::format("{} bytes from row {} on claim to be a chunk of {} bytes", stored, row,
                            chunkBytes_));
  }
  return stored;
}

/// @return bit i is set when filter i was not applied to the chunk
std::uint32_t ChunkReader::loadStored(hsize_t row, hsize_t column) {
  const hsize_t offset[2] = {row, column};
  row_ = row;
  chunk_.resize(storedBytes(row, column));
  std::uint32_t skipped = 0;
  checked(H5Dread_chunk(dataset_, H5P_DEFAULT, offset, &skipped, chunk_.data()), unreadable);
  return skipped;
}

void ChunkReader::load(hsize_t row, hsize_t column) {
  const std::uint32_t skipped = loadStored(row, column);
  for (std::size_t i = layout_.filters.size(); i-- > 0;) {
    if ((skipped >> i & 1U) == 0) undo(layout_.filters[i]);
  }
  if (chunk_.size() != chunkBytes_) {
    refuse(fmt::format("{} bytes instead of {}", chunk_.size(), chunkBytes_));
  }
  if (!convert_) return;
  const Handle stored = checked(H5Dget_type(dataset_), H5Tclose, unreadable);
  checked(H5Tconvert(stored.id(), componentType(info_.type), chunkBytes_ / info_.bytes,
                     chunk_.data(), nullptr, H5P_DEFAULT),
          unreadable);
}

void ChunkReader::undo(const Filter& filter) {
  if (filter.id == H5Z_FILTER_FLETCHER32) return undoChecksum();
  if (filter.id == H5Z_FILTER_DEFLATE) return undoDeflate();
  undoShuffle(filter.setting);
}

void ChunkReader::refuse(const std::string& fault) const {
  throw Fault(fmt::format("the values from row {} on are damaged ({})", row_, fault));
}

void ChunkReader::checkSum() const {
  std::uint32_t checksum = 0;
  if (chunk_.size() < sizeof(checksum)) refuse("checksum");
  const std::size_t size = chunk_.size() - sizeof(checksum);
  std::memcpy(&checksum, chunk_.data() + size, sizeof(checksum));
  if (checksum != fletcher32(chunk_.data(), size)) refuse("checksum");
}

void ChunkReader::undoChecksum() {
  checkSum();
  chunk_.resize(chunk_.size() - sizeof(std::uint32_t));
}

/// Into exactly the room of a chunk and the checksums that may be part of it.
void ChunkReader::undoDeflate() {
  other_.resize(chunkBytes_ + sizeof(std::uint32_t) * layout_.filters.size());
  uLongf size = other_.size();
  if (uncompress(reinterpret_cast<Bytef*>(other_.data()), &size,
                 reinterpret_cast<const Bytef*>(chunk_.data()), chunk_.size()) != Z_OK) {
    refuse("deflate");
  }
  other_.resize(size);
  chunk_.swap(other_);
}

/// Puts the bytes of an element, which lie in planes, together again; what is left of the last
/// element lies behind them.
void ChunkReader::undoShuffle(std::size_t elementBytes) {
  if (elementBytes == 0) refuse("shuffle");
  const std::size_t elements = chunk_.size() / elementBytes;
  const std::size_t shuffled = elements * elementBytes;
  other_.resize(chunk_.size());
  for (std::size_t byte = 0; byte < elementBytes; ++byte) {
    const char* plane = chunk_.data() + byte * elements;
    for (std::size_t i = 0; i < elements; ++i) other_[i * elementBytes + byte] = plane[i];
  }
  std::copy(chunk_.begin() + static_cast<std::ptrdiff_t>(shuffled), chunk_.end(),
            other_.begin() + static_cast<std::ptrdiff_t>(shuffled));
  chunk_.swap(other_);
}

void ChunkReader::copyRows(std::size_t within, std::size_t count, hsize_t column, char* out) const {
  const std::size_t chunkRow = layout_.columns * info_.bytes;
  const std::size_t outRow = info_.components * info_.bytes;
  const char* from = chunk_.data() + within * chunkRow;
  if (chunkRow == outRow) {
    std::memcpy(out, from, count * outRow);
    return;
  }
  const std::size_t bytes =
      std::min<hsize_t>(layout_.columns, info_.components - column) * info_.bytes;
  for (out += column * info_.bytes; count > 0; --count, from += chunkRow, out += outRow) {
    std::memcpy(out, from, bytes);
  }
}

}  // namespace Strandel::Hdf5
