// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>

#include <fmt/format.h>

#include "host/commands/Commands.h"
#include "host/terminal/Result.h"
#include "host/terminal/Telling.h"
#include <velorn/flight/Compare.h>

using namespace Velorn::Flights;

namespace {

struct CompareCall {
  std::filesystem::path truth, result, adjusted;
  bool json = false, quiet = false;
};

void run(const CompareCall& call) {
  const auto report = [&] {
    Telling telling(call.quiet);
    return compare(call.truth, call.result, call.adjusted, telling.watch());
  }();
  if (call.json) {
    fmt::print("{}", documentOf(report));
  } else {
    printResult("{}", textOf(report));
  }
}

}  // namespace

void addCompare(CLI::App& app) {
  const auto call = std::make_shared<CompareCall>();
  auto& command = *app.add_subcommand(
      "compare", "Holds the result of a run on a synthetic flight against the truth");
  command.add_option("TRUTH", call->truth, "folder of the flight, as `velorn simulate` wrote it")
      ->required()
      ->type_name("FOLDER");
  command.add_option("RESULT", call->result, "root folder of the run")
      ->required()
      ->type_name("FOLDER");
  command
      .add_option("--adjusted", call->adjusted,
                  "folder of the adjusted strips; default: 05_adjusted in RESULT")
      ->type_name("FOLDER");
  command.add_flag("--json", call->json, "one JSON document instead of tables");
  command.add_flag("--quiet", call->quiet, "no progress; warnings and results stay");
  command.footer("Example: velorn compare demo demo/run");
  command.callback([call] { run(*call); });
}
