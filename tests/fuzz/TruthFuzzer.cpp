// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The truth of a synthetic flight is refused, or read.
#include "flight/comparison/Truth.h"
#include "tests/fuzz/FolderOfParts.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  try {
    Comparison::readTruth(FolderOfParts::written(bytes, size, {"truth.json", "truth/planes.csv"}));
  } catch (const Error&) {
    // refused
  }
  return 0;
}
