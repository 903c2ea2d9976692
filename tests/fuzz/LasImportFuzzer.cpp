// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A LAS file is imported with a sound trajectory, or refused.
#include "flight/formats/TrajectoryExport.h"
#include "platform/morvane/Console.h"
#include "tests/fuzz/FileInMemory.h"
#include "tests/support/NoProgress.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/Import.h>

using namespace Velorn::Flights;

namespace {

/// Ten seconds over the middle of zone 32, as the files of the corpus have them.
void writeTrajectory(const std::filesystem::path& file) {
  constexpr double begin = 407100.0;
  std::vector<SbetRecord> records;
  for (int k = 0; k <= 100; ++k) {
    records.push_back({begin + 0.1 * k, 0.8412 + 1e-6 * k, 0.15708, 800.0, 0.01, -0.02, 6.28});
  }
  writeSbet(file, records);
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
  NoProgress progress;
  try {
    importFlight(options, progress, [](const std::string&) {});
  } catch (const Error&) {
    // refused
  }
  std::filesystem::remove_all(options.output);
  return written ? 0 : 1;
}
