// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/StoredColumn.h"

#include <algorithm>
#include <new>
#include <optional>

#include <fmt/format.h>

#include "platform/plome/AvailableMemory.h"
#include "platform/strandel/hdf5/AttributeFile.h"
#include "platform/strandel/hdf5/ChunkReader.h"
#include "platform/strandel/hdf5/Format.h"
#include "platform/strandel/hdf5/Types.h"

namespace Strandel::Hdf5 {
namespace {

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

/// How the values lie in the file: in chunks, or as one piece.
using Layout = std::optional<ChunkLayout>;

Layout layoutOf(hid_t dataset) {
  const Handle properties = checked(H5Dget_create_plist(dataset), H5Pclose, unreadable);
  const auto kind = H5Pget_layout(properties.id());
  if (kind == H5D_VIRTUAL || H5Pget_external_count(properties.id()) > 0) {
    throw Fault("its values lie in another file; only values in the file itself are read");
  }
  return kind == H5D_CHUNKED ? Layout(chunkLayoutOf(properties.id())) : std::nullopt;
}

/// Refuses a count that the file is too small to hold.
void checkPlausible(const StoredFile& file, std::size_t rows, ValueType type,
                    const Layout& layout) {
  const bool deflated = layout && layout->deflated();
  if (rows > file.bytes() / rowBytes(type) * (deflated ? mostDeflated : 1)) {
    throw Fault(
        fmt::format("claims {} values, the file of {} bytes cannot hold them", rows, file.bytes()));
  }
}

/// The library reads zeros where nothing was ever stored; that is not what the values were.
void checkOnePiece(hid_t dataset, std::size_t bytes) {
  const hsize_t stored = H5Dget_storage_size(dataset);
  if (stored < bytes) throw Fault(fmt::format("holds {} bytes of {}", stored, bytes));
}

/// Refuses values that a small file would inflate beyond the memory there is. Deflated zeros take a
/// thousandth of their size, and are read as long as they fit.
void checkInflation(hid_t dataset, const ChunkLayout& layout, ValueType type, std::size_t rows,
                    std::size_t count) {
  constexpr std::size_t harmless = std::size_t{1} << 26;  // [bytes]
  constexpr std::size_t usual = 100;  // times that values of a flight are deflated, at most
  const std::size_t chunk = layout.rows * layout.columns * infoOf(type).bytes;
  const std::size_t needed = count * rowBytes(type) + 2 * chunk;  // one more while it is inflated
  if (!layout.deflated() || needed <= harmless) return;
  const hsize_t stored = H5Dget_storage_size(dataset);
  const std::size_t inflated = std::max(rows * rowBytes(type), chunk);
  const auto free = Plome::availableMemory();
  if (inflated / usual <= stored || !free || needed <= *free / 2) return;
  throw Fault(fmt::format("{} bytes would inflate to {}, and {} bytes of memory are free", stored,
                          inflated, *free));
}

/// Reads values that lie as one piece.
void readOnePiece(hid_t dataset, ValueType type, std::size_t first, std::size_t count, void* out) {
  const hsize_t start[2] = {first, 0}, size[2] = {count, infoOf(type).components};
  const int rank = infoOf(type).components == 1 ? 1 : 2;
  const Handle stored = checked(H5Dget_space(dataset), H5Sclose, unreadable);
  checked(H5Sselect_hyperslab(stored.id(), H5S_SELECT_SET, start, nullptr, size, nullptr),
          unreadable);
  const Handle memory = checked(H5Screate_simple(rank, size, nullptr), H5Sclose, unreadable);
  checked(H5Dread(dataset, componentType(type), memory.id(), stored.id(), H5P_DEFAULT, out),
          unreadable);
}

}  // namespace

template <typename Action>
std::string StoredColumn::guarded(const Action& action) const {
  const auto refused = [this](const std::string& fault) {
    return fmt::format("Strandel::Field::values: {}: {}: {}", file_->path().string(), object_,
                       fault);
  };
  const Session session;
  try {
    const Handle dataset = openDataset(*file_, object_);
    action(dataset.id(), layoutOf(dataset.id()));
    return {};
  } catch (const Fault& fault) {
    return refused(fault.what());
  } catch (const std::bad_alloc&) {
    return refused("not enough memory");
  }
}

std::string StoredColumn::check(std::size_t first, std::size_t count) const {
  if (count == 0) return {};
  return guarded([&](hid_t dataset, const Layout& layout) {
    if (!layout) return checkOnePiece(dataset, rows() * rowBytes(valueType()));
    ChunkReader(dataset, valueType(), rows(), *layout, file_->bytes()).check(first, count);
    checkInflation(dataset, *layout, valueType(), rows(), count);
  });
}

std::string StoredColumn::read(std::size_t first, std::size_t count, void* out) const {
  if (count == 0) return {};
  return guarded([&](hid_t dataset, const Layout& layout) {
    if (layout) {
      checkInflation(dataset, *layout, valueType(), rows(), count);
      ChunkReader(dataset, valueType(), rows(), *layout, file_->bytes())
          .read(first, count, static_cast<char*>(out));
    } else {
      checkOnePiece(dataset, rows() * rowBytes(valueType()));
      readOnePiece(dataset, valueType(), first, count, out);
    }
  });
}

bool StoredColumn::copyChunks(hid_t group, const std::string& name) const {
  const Handle from = openDataset(*file_, object_);
  const Layout layout = layoutOf(from.id());
  if (!layout || rows() == 0) return false;
  const auto fault = name + ": cannot be copied from " + file_->path().string();
  const Handle type = checked(H5Dget_type(from.id()), H5Tclose, fault);
  const Handle ownType = checked(H5Tcopy(type.id()), H5Tclose, fault);  // the type may have a name
  const Handle space = checked(H5Dget_space(from.id()), H5Sclose, fault);
  const Handle properties = checked(H5Dget_create_plist(from.id()), H5Pclose, fault);
  setCommonProperties(properties.id());
  checked(H5Pset_alloc_time(properties.id(), H5D_ALLOC_TIME_INCR), fault);
  const Handle to = checked(H5Dcreate2(group, name.c_str(), ownType.id(), space.id(), H5P_DEFAULT,
                                       properties.id(), H5P_DEFAULT),
                            H5Dclose, fault);
  try {
    ChunkReader(from.id(), valueType(), rows(), *layout, file_->bytes()).copyTo(to.id());
  } catch (const Fault& damage) {
    throw Fault(fault + ": " + damage.what());
  }
  return true;
}

void StoredColumn::copyAttributesTo(hid_t group, const std::string& name) const {
  const Handle from = openDataset(*file_, object_);
  const Handle to = checked(H5Dopen2(group, name.c_str(), H5P_DEFAULT), H5Dclose, unreadable);
  copyAttributes(from.id(), to.id());
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
