// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// An SBET file is refused, or becomes columns of a trajectory, as import makes them.
#include "flight/formats/PoseOrder.h"
#include "tests/fuzz/FileInMemory.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const FileInMemory sbet(bytes, size);
  try {
    auto poses = inTimeOrder(readSbet(sbet.path(), TimeOrder::Any));
    gapsLongerThan(1.0, poses.records);
    trajectoryColumns(poses.records, 32632);
  } catch (const Error&) {
    // refused
  }
  return 0;
}
