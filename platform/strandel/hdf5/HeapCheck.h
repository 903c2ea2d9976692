// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A look at the one structure of an HDF5 file that has no checksum in any version of the format and
// that the library follows without looking: the global heap, where texts of variable length lie. A
// damaged size in it makes the library read and write beyond its memory, or turn in a circle.
#pragma once

#include <cstddef>
#include <optional>

namespace Strandel::Hdf5 {

/// Bytes of a heap's header.
inline constexpr std::size_t heapHeaderBytes = 16;

/// @param bytes  heapHeaderBytes of them
/// @return the size of the heap that begins here; nothing when none does
std::optional<std::size_t> heapSize(const unsigned char* bytes);

/// @param bytes  a whole heap of `size` bytes
/// @return whether its objects follow each other to its very end
bool isSoundHeap(const unsigned char* bytes, std::size_t size);

}  // namespace Strandel::Hdf5
