// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Surveyed control is refused, or becomes points of ground truth.
#include "host/Failure.h"
#include "host/pointcloud/ControlFile.h"
#include "tests/fuzz/FileInMemory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const FileInMemory csv(bytes, size);
  try {
    const auto control = PointCloud::readControl(csv.path(), 1.0);
    // So wide that a patch of the largest radius takes no second.
    PointCloud::patchPoints(control.patches, 20.0);
  } catch (const Failure&) {
    // refused
  }
  return 0;
}
