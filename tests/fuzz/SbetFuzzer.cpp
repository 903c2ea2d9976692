// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// An SBET file is refused, or becomes columns of a trajectory, as import makes them.
#include "host/Failure.h"
#include "host/pointcloud/PoseOrder.h"
#include "tests/fuzz/FileInMemory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const FileInMemory sbet(bytes, size);
  try {
    auto poses = inTimeOrder(readSbet(sbet.path(), PointCloud::TimeOrder::Any));
    gapsLongerThan(1.0, poses.records);
    trajectoryColumns(poses.records, 32632);
  } catch (const Failure&) {
    // refused
  }
  return 0;
}
