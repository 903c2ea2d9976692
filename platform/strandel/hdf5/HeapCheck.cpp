// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/hdf5/HeapCheck.h"

#include <cstdint>
#include <cstring>

namespace Strandel::Hdf5 {
namespace {

constexpr std::size_t objectHeaderBytes = 16;  // index, references, 4 reserved bytes, size
constexpr unsigned char signature[8] = {'G', 'C', 'O', 'L', 1, 0, 0, 0};

template <typename T>
T littleEndian(const unsigned char* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof(value));
  return value;
}

}  // namespace

std::optional<std::size_t> heapSize(const unsigned char* bytes) {
  if (std::memcmp(bytes, signature, sizeof(signature)) != 0) return std::nullopt;
  return littleEndian<std::uint64_t>(bytes + sizeof(signature));
}

bool isSoundHeap(const unsigned char* bytes, std::size_t size) {
  std::size_t at = heapHeaderBytes;
  // Less than a header at the end is unused.
  while (at <= size && size - at >= objectHeaderBytes) {
    const auto index = littleEndian<std::uint16_t>(bytes + at);
    const auto claimed = littleEndian<std::uint64_t>(bytes + at + 8);
    if (claimed > size - at) return false;
    // Object 0 is the free space to the end, its size counts its header. The others follow in steps
    // of 8 bytes.
    if (index == 0) return claimed == size - at;
    at += objectHeaderBytes + (claimed + 7) / 8 * 8;
  }
  return at <= size;
}

}  // namespace Strandel::Hdf5
