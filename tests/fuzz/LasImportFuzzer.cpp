// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A LAS file is imported with a sound trajectory, or refused.
#include "flight/formats/TrajectoryExport.h"
#include "platform/morvane/Console.h"
#include "tests/flight/exchange/TenSeconds.h"
#include "tests/fuzz/FileInMemory.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/Import.h>

using namespace Velorn::Flights;

namespace {

/// The time and place of the corpus' files.
void writeTrajectory(const std::filesystem::path& file) {
  writeSbet(file, tenSeconds(407100.0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const TemporaryFolder folder;
  static const Morvane::ConsoleRedirection silence([](std::string_view) {});
  static const bool written = (writeTrajectory(folder / "flight.sbet"), true);
  const FileInMemory las(bytes, size);
  ImportSettings options;
  options.strips = {las.path()};
  options.trajectory.files = {folder / "flight.sbet"};
  options.output = folder / "imported";
  options.leverArm = {0.1, -0.2, 0.3};
  options.misalignment = {0.1, 0.2, -0.3};
  try {
    importFlight(options, {});
  } catch (const Error&) {
    // refused
  }
  std::filesystem::remove_all(options.output);
  return written ? 0 : 1;
}
