// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A block of correspondences is refused, or every record of it can be had.
#include "platform/strandel/MyStorage.h"
#include "tests/fuzz/FolderOfParts.h"
#include <velorn/CorrespondenceBlock.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto file = FolderOfParts::written(bytes, size, {"c0_1.kx"}) / "c0_1.kx";
  const Velorn::CorrespondenceBlock block(file, std::make_shared<Strandel::MyStorage>(0, 0, 0, 1));
  if (!block.errorText().empty()) return 0;
  for (std::uint32_t k = 0; k < block.size(); ++k) block.get(k);
  return 0;
}
