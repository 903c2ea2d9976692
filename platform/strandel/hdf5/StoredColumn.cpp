// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/StoredColumn.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include <fmt/format.h>

#include "platform/strandel/hdf5/Fletcher32.h"
#include "platform/strandel/hdf5/Types.h"

namespace Strandel::Hdf5 {
namespace {

constexpr const char* unreadable = "unreadable, the file is damaged";

Handle openDataset(const StoredFile& file, const std::string& object) {
  return checked(H5Dopen2(file.id(), object.c_str(), H5P_DEFAULT), H5Dclose, unreadable);
}

std::string shapeOf(int rank, const hsize_t* dimensions) {
  std::string text = rank == 0 ? "a single value" : "";
  for (int i = 0; i < rank; ++i) text += fmt::format("[{}]", dimensions[i]);
  return text;
}

void checkType(hid_t dataset, ValueType type) {
  const Handle stored = checked(H5Dget_type(dataset), H5Tclose, unreadable);
  if (holdsComponents(stored.id(), type)) return;
  const Handle wanted = checked(H5Tcopy(componentType(type)), H5Tclose, unreadable);
  throw Fault(fmt::format("expected {}, found {}", describe(wanted.id()), describe(stored.id())));
}

/// @return the number of rows
std::size_t checkedRows(hid_t space, ValueType type) {
  const int components = static_cast<int>(infoOf(type).components);
  const int rank = H5Sget_simple_extent_ndims(space);
  hsize_t dimensions[H5S_MAX_RANK] = {};
  checked(H5Sget_simple_extent_dims(space, dimensions, nullptr), unreadable);
  const bool fits = components == 1 ? rank == 1 : rank == 2 && dimensions[1] == 3;
  if (!fits) {
    throw Fault(fmt::format("expected {}, found {}", components == 1 ? "[n]" : "[n][3]",
                            shapeOf(rank, dimensions)));
  }
  return dimensions[0];
}

/// How the values lie in the file.
struct Layout {
  bool chunked = false;
  bool compressed = false;
  bool checksumOnly = false;  ///< the one filter is fletcher32
  bool noFilter = false;
  hsize_t chunkRows = 0;
};

Layout layoutOf(hid_t dataset) {
  const Handle properties = checked(H5Dget_create_plist(dataset), H5Pclose, unreadable);
  const auto kind = H5Pget_layout(properties.id());
  if (kind == H5D_VIRTUAL || H5Pget_external_count(properties.id()) > 0) {
    throw Fault("its values lie in another file; only values in the file itself are read");
  }
  Layout layout;
  layout.chunked = kind == H5D_CHUNKED;
  const int filters = checked(H5Pget_nfilters(properties.id()), unreadable);
  layout.noFilter = filters == 0;
  for (int i = 0; i < filters; ++i) {
    unsigned flags = 0, settings = 0;
    std::size_t values = 0;
    const auto filter = H5Pget_filter2(properties.id(), static_cast<unsigned>(i), &flags, &values,
                                       nullptr, 0, nullptr, &settings);
    layout.checksumOnly = filters == 1 && filter == H5Z_FILTER_FLETCHER32;
    if (filter != H5Z_FILTER_FLETCHER32 && filter != H5Z_FILTER_SHUFFLE) layout.compressed = true;
  }
  if (layout.chunked) {
    hsize_t chunk[H5S_MAX_RANK] = {};
    checked(H5Pget_chunk(properties.id(), H5S_MAX_RANK, chunk), unreadable);
    layout.chunkRows = std::max<hsize_t>(chunk[0], 1);
  }
  return layout;
}

/// Refuses a count that the file is too small to hold, before memory is taken for it. Deflate
/// shrinks zeros at most 1032 times (zlib's own figure).
void checkPlausible(const StoredFile& file, std::size_t rows, ValueType type,
                    const Layout& layout) {
  const std::size_t most = file.bytes() / rowBytes(type) * (layout.compressed ? 1032U : 1U);
  if (rows > most) {
    throw Fault(
        fmt::format("claims {} values, the file of {} bytes cannot hold them", rows, file.bytes()));
  }
}

/// The library reads zeros where nothing was ever stored; that is not what the values were.
void checkAllStored(hid_t dataset, std::size_t rows, ValueType type, const Layout& layout) {
  if (layout.chunked) {
    const Handle space = checked(H5Dget_space(dataset), H5Sclose, unreadable);
    hsize_t stored = 0;
    checked(H5Dget_num_chunks(dataset, space.id(), &stored), unreadable);
    const hsize_t wanted = (rows + layout.chunkRows - 1) / layout.chunkRows;
    if (stored < wanted)
      throw Fault(fmt::format("{} of its {} chunks were never written", wanted - stored, wanted));
  } else if (H5Dget_storage_size(dataset) < rows * rowBytes(type)) {
    throw Fault(
        fmt::format("claims {} values, {} bytes are stored", rows, H5Dget_storage_size(dataset)));
  }
}

/// Reads through the library's own filters.
void readByLibrary(hid_t dataset, ValueType type, std::size_t first, std::size_t count, void* out) {
  const hsize_t start[2] = {first, 0}, size[2] = {count, infoOf(type).components};
  const int rank = infoOf(type).components == 1 ? 1 : 2;
  const Handle stored = checked(H5Dget_space(dataset), H5Sclose, unreadable);
  checked(H5Sselect_hyperslab(stored.id(), H5S_SELECT_SET, start, nullptr, size, nullptr),
          unreadable);
  const Handle memory = checked(H5Screate_simple(rank, size, nullptr), H5Sclose, unreadable);
  checked(H5Dread(dataset, componentType(type), memory.id(), stored.id(), H5P_DEFAULT, out),
          unreadable);
}

/// Reads whole chunks as they lie in the file and checks their checksums here: several times as
/// fast as the library, which copies every chunk twice and sums it word by word.
class ChunkReader {
 public:
  ChunkReader(hid_t dataset, ValueType type, const Layout& layout)
      : dataset_(dataset),
        rowBytes_(rowBytes(type)),
        chunkRows_(layout.chunkRows),
        chunkBytes_(layout.chunkRows * rowBytes_),
        checksumBytes_(layout.checksumOnly ? sizeof(std::uint32_t) : 0),
        chunk_(chunkBytes_ + checksumBytes_) {}

  void read(std::size_t first, std::size_t count, char* out) {
    while (count > 0) {
      const std::size_t within = first % chunkRows_;
      const std::size_t rows = std::min<std::size_t>(count, chunkRows_ - within);
      readChunk(first - within);
      std::memcpy(out, chunk_.data() + within * rowBytes_, rows * rowBytes_);
      out += rows * rowBytes_;
      first += rows;
      count -= rows;
    }
  }

 private:
  void readChunk(hsize_t row) {
    const hsize_t offset[2] = {row, 0};
    hsize_t stored = 0;
    std::uint32_t skippedFilters = 0;
    if (H5Dget_chunk_storage_size(dataset_, offset, &stored) < 0 || stored != chunk_.size() ||
        H5Dread_chunk(dataset_, H5P_DEFAULT, offset, &skippedFilters, chunk_.data()) < 0 ||
        skippedFilters != 0) {
      throw Fault(unreadable + reason());
    }
    if (checksumBytes_ == 0) return;
    std::uint32_t checksum = 0;
    std::memcpy(&checksum, chunk_.data() + chunkBytes_, sizeof(checksum));
    if (checksum != fletcher32(chunk_.data(), chunkBytes_)) {
      throw Fault(fmt::format("the values from row {} on are damaged (checksum)", row));
    }
  }

  hid_t dataset_;
  std::size_t rowBytes_;
  std::size_t chunkRows_;
  std::size_t chunkBytes_;
  std::size_t checksumBytes_;
  std::vector<char> chunk_;
};

bool liesAsInMemory(hid_t dataset, ValueType type) {
  const Handle stored = checked(H5Dget_type(dataset), H5Tclose, unreadable);
  return H5Tequal(stored.id(), componentType(type)) > 0;
}

}  // namespace

std::string StoredColumn::read(std::size_t first, std::size_t count, void* out) const {
  if (count == 0) return {};
  const Session session;
  try {
    const Handle dataset = openDataset(*file_, object_);
    const Layout layout = layoutOf(dataset.id());
    checkAllStored(dataset.id(), rows(), valueType(), layout);
    if (layout.chunked && (layout.checksumOnly || layout.noFilter) &&
        liesAsInMemory(dataset.id(), valueType())) {
      ChunkReader(dataset.id(), valueType(), layout).read(first, count, static_cast<char*>(out));
    } else {
      readByLibrary(dataset.id(), valueType(), first, count, out);
    }
    return {};
  } catch (const Fault& fault) {
    return fmt::format("Strandel::Field::values: {}: {}: {}", file_->path().string(), object_,
                       fault.what());
  } catch (const std::bad_alloc&) {
    return fmt::format("Strandel::Field::values: {}: {}: not enough memory", file_->path().string(),
                       object_);
  }
}

std::shared_ptr<const StoredColumn> openColumn(const std::shared_ptr<const StoredFile>& file,
                                               const std::string& object, ValueType type) {
  const Handle dataset = openDataset(*file, object);
  checkType(dataset.id(), type);
  const Handle space = checked(H5Dget_space(dataset.id()), H5Sclose, unreadable);
  if (H5Sget_simple_extent_type(space.id()) == H5S_NULL) return nullptr;
  const std::size_t rows = checkedRows(space.id(), type);
  checkPlausible(*file, rows, type, layoutOf(dataset.id()));
  return std::make_shared<const StoredColumn>(file, object, type, rows);
}

}  // namespace Strandel::Hdf5
