// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/Driver.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <memory>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/strandel/hdf5/HeapCheck.h"

namespace Strandel::Hdf5 {
namespace {

/// Travels in the access properties to openFile; the library copies it byte by byte.
struct DriverInfo {
  WriteState* state;
};

/// The library's own part comes first, so that a pointer to it is a pointer to the whole.
struct OpenFile {
  H5FD_t base;
  int descriptor;
  haddr_t end;        // of the addresses in use
  haddr_t size;       // of the file
  WriteState* state;  // null for a file that is only read
};

OpenFile& fileOf(H5FD_t* file) {
  return *reinterpret_cast<OpenFile*>(file);
}
const OpenFile& fileOf(const H5FD_t* file) {
  return *reinterpret_cast<const OpenFile*>(file);
}

int systemFlags(unsigned flags) {
  int system = (flags & H5F_ACC_RDWR ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NONBLOCK;
  if (flags & H5F_ACC_CREAT) system |= O_CREAT;
  if (flags & H5F_ACC_EXCL) system |= O_EXCL;
  if (flags & H5F_ACC_TRUNC) system |= O_TRUNC;
  return system;
}

H5FD_t* openFile(const char* name, unsigned flags, hid_t access, haddr_t) {
  const auto* info = static_cast<const DriverInfo*>(H5Pget_driver_info(access));
  const int descriptor = open(name, systemFlags(flags), 0666);
  if (descriptor < 0) {
    if (info && info->state && (flags & H5F_ACC_CREAT)) info->state->error = errno;
    return nullptr;
  }
  struct stat status {};
  auto* file = new (std::nothrow) OpenFile{};
  if (!file || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(descriptor);
    delete file;
    return nullptr;
  }
  // Values are read front to back; the system then reads further ahead than it would by itself.
  posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
  file->descriptor = descriptor;
  file->size = static_cast<haddr_t>(status.st_size);
  file->state = info ? info->state : nullptr;
  return &file->base;
}

herr_t closeFile(H5FD_t* file) {
  const OpenFile& closed = fileOf(file);
  // Some network file systems tell only now that the disk is full.
  if (close(closed.descriptor) != 0 && closed.state && closed.state->error == 0) {
    closed.state->error = errno;
  }
  delete &closed;
  return 0;
}

/// Every opening stands alone, also a second one of the same file: else the library would serve it
/// from what it remembers of the first, although another program may have changed the file since.
int compareFiles(const H5FD_t* a, const H5FD_t* b) {
  return a == b ? 0 : std::less<>()(a, b) ? -1 : 1;
}

herr_t features(const H5FD_t*, unsigned long* flags) {
  *flags = H5FD_FEAT_AGGREGATE_METADATA | H5FD_FEAT_ACCUMULATE_METADATA | H5FD_FEAT_DATA_SIEVE |
           H5FD_FEAT_AGGREGATE_SMALLDATA;
  return 0;
}

haddr_t endOfAddresses(const H5FD_t* file, H5FD_mem_t) {
  return fileOf(file).end;
}
herr_t setEndOfAddresses(H5FD_t* file, H5FD_mem_t, haddr_t address) {
  fileOf(file).end = address;
  return 0;
}
haddr_t endOfFile(const H5FD_t* file, H5FD_mem_t) {
  return fileOf(file).size;
}

/// @return false where the file ends, or cannot be read
bool readWhole(const OpenFile& from, haddr_t address, std::size_t size, void* buffer) {
  auto* bytes = static_cast<char*>(buffer);
  while (size > 0) {
    const auto got = pread(from.descriptor, bytes, size, static_cast<off_t>(address));
    if (got < 0 && errno == EINTR) continue;
    // A file that is being written may be read where it was never written; a file that is only read
    // may not.
    if (got == 0 && from.state) {
      std::memset(bytes, 0, size);
      return true;
    }
    if (got <= 0) return false;
    bytes += got;
    address += static_cast<haddr_t>(got);
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

/// @return false when a heap begins with what was read and is damaged
bool heapIsSound(const OpenFile& from, haddr_t address, std::size_t size, const void* buffer) {
  const auto* bytes = static_cast<const unsigned char*>(buffer);
  const auto wanted = size < heapHeaderBytes ? std::nullopt : heapSize(bytes);
  if (!wanted || from.state) return true;
  if (*wanted <= size) return isSoundHeap(bytes, *wanted);
  if (*wanted > from.size) return false;
  std::unique_ptr<unsigned char[]> heap(new (std::nothrow) unsigned char[*wanted]);
  return heap && readWhole(from, address, *wanted, heap.get()) && isSoundHeap(heap.get(), *wanted);
}

herr_t readBytes(H5FD_t* file, H5FD_mem_t, hid_t, haddr_t address, std::size_t size, void* buffer) {
  const OpenFile& from = fileOf(file);
  return readWhole(from, address, size, buffer) && heapIsSound(from, address, size, buffer) ? 0
                                                                                            : -1;
}

herr_t writeBytes(H5FD_t* file, H5FD_mem_t, hid_t, haddr_t address, std::size_t size,
                  const void* buffer) {
  OpenFile& to = fileOf(file);
  if (!to.state) return -1;
  const auto* bytes = static_cast<const char*>(buffer);
  to.size = std::max(to.size, address + size);
  while (size > 0 && to.state->error == 0) {
    const auto put = pwrite(to.descriptor, bytes, size, static_cast<off_t>(address));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) {
      to.state->error = put < 0 ? errno : ENOSPC;
      break;
    }
    bytes += put;
    address += static_cast<haddr_t>(put);
    size -= static_cast<std::size_t>(put);
  }
  return 0;
}

/// Brings the file to the length that the library counts on.
herr_t truncateFile(H5FD_t* file, hid_t, hbool_t) {
  OpenFile& to = fileOf(file);
  if (!to.state || to.size == to.end) return 0;
  if (to.state->error == 0 && ftruncate(to.descriptor, static_cast<off_t>(to.end)) != 0) {
    to.state->error = errno;
  }
  to.size = to.end;
  return 0;
}

hid_t registerDriver() {
  H5FD_class_t driver{};
  driver.name = "velorn";
  driver.maxaddr = (haddr_t{1} << 62) - 1;
  driver.fc_degree = H5F_CLOSE_STRONG;
  driver.fapl_size = sizeof(DriverInfo);
  driver.open = openFile;
  driver.close = closeFile;
  driver.cmp = compareFiles;
  driver.query = features;
  driver.get_eoa = endOfAddresses;
  driver.set_eoa = setEndOfAddresses;
  driver.get_eof = endOfFile;
  driver.read = readBytes;
  driver.write = writeBytes;
  driver.truncate = truncateFile;
  constexpr H5FD_mem_t kinds[H5FD_MEM_NTYPES] = H5FD_FLMAP_DICHOTOMY;
  std::copy(std::begin(kinds), std::end(kinds), driver.fl_map);
  return H5FDregister(&driver);
}

Handle accessWith(const DriverInfo& info) {
  static const hid_t driver = registerDriver();
  Handle access = checked(H5Pcreate(H5P_FILE_ACCESS), H5Pclose, "cannot prepare the HDF5 library");
  checked(H5Pset_driver(access.id(), driver, &info), "cannot prepare the HDF5 library");
  checked(H5Pset_fclose_degree(access.id(), H5F_CLOSE_STRONG), "cannot prepare the HDF5 library");
  return access;
}

}  // namespace

Handle accessForReading() {
  return accessWith({nullptr});
}

Handle accessForWriting(WriteState& state) {
  Handle access = accessWith({&state});
  // The newest formats of 1.10 alone have checksums on all metadata.
  checked(H5Pset_libver_bounds(access.id(), H5F_LIBVER_V110, H5F_LIBVER_V110),
          "cannot prepare the HDF5 library");
  return access;
}

}  // namespace Strandel::Hdf5
