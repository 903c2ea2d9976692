// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Surveyed control is refused, or becomes points of ground truth.
#include "flight/formats/ControlFile.h"
#include "tests/fuzz/FileInMemory.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const FileInMemory csv(bytes, size);
  try {
    const auto control = readControl(csv.path(), 1.0);
    // So wide that a patch of the largest radius takes no second.
    patchPoints(control.patches, 20.0);
  } catch (const Error&) {
    // refused
  }
  return 0;
}
