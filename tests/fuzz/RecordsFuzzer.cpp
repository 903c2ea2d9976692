// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The state of a run, its summary and the record of a step: each is refused with a message, and a
// record counts as none.
#include <cstdlib>

#include "flight/records/RunFolder.h"
#include "flight/records/RunState.h"
#include "tests/fuzz/FolderOfParts.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

template <typename Read>
void refusedOrRead(const Read& read) {
  try {
    read();
  } catch (const Error&) {
    // refused
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto folder =
      FolderOfParts::written(bytes, size, {"run.json", "summary.json", "step.json"});
  refusedOrRead([&] { RunState::in(folder); });
  refusedOrRead([&] { RunFolder(folder).readSummary(); });
  const StepRecord record(folder, "step");
  refusedOrRead([&] { record.requireOutputs({folder / "step.json"}, "again"); });
  if (record.valid<RoundReport>(StepKey("of nobody"))) std::abort();
  return 0;
}
