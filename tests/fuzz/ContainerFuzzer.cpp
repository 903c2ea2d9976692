// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Damaged containers. The corpus is of the formats of HDF5 1.10, whose metadata have checksums: a
// damage that hits them is refused, one that hits values without a checksum is read or refused.
// Files in the older formats are no part of it. There the HDF5 library follows damaged addresses
// and sizes unchecked and may crash by itself; docs/kx-format.md tells how often.
#include "tests/fuzz/ContainerRead.h"
#include "tests/fuzz/FileInMemory.h"
#include "tests/support/TemporaryFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const TemporaryFolder folder;
  const FileInMemory container(bytes, size);
  readAndSave(container.path(), folder / "copy.kx");
  return 0;
}
