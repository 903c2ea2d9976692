// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A file of a trajectory's accuracy is refused, or becomes standard deviations.
#include "flight/formats/AccuracyFile.h"
#include "tests/fuzz/FileInMemory.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const FileInMemory accuracy(bytes, size);
  try {
    const auto records = readAccuracy(accuracy.path());
    accuracyOver(records, records.front().time, records.back().time);
  } catch (const Error&) {
    // refused
  }
  return 0;
}
