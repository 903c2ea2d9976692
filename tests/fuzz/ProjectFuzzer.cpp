// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A project file, of this or the first form, is refused by its line, or read.
#include "host/project/ProjectFile.h"
#include "tests/fuzz/FileInMemory.h"
#include <velorn/flight/Error.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const FileInMemory project(bytes, size);
  Velorn::Flights::FlightSettings settings;
  try {
    readProject(project.path(), {}, settings);
  } catch (const Velorn::Flights::Error&) {
    // refused
  }
  return 0;
}
