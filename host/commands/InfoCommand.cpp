// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "host/commands/Commands.h"
#include <velorn/flight/Describe.h>
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

struct InfoCall {
  std::vector<std::filesystem::path> files;
  bool json = false;
};

/// Prints everything that can be read before it gives up on what cannot.
void info(const InfoCall& call) {
  std::string faults;
  const auto print = [&](const FileDescription& one) {
    std::cout << one.text << std::flush;
    for (const auto& fault : one.faults) faults += (faults.empty() ? "" : "\n") + fault;
  };
  if (call.json) {
    print(documentFiles(call.files));
  } else {
    for (const auto& file : call.files) print(describeFile(file));
  }
  if (!faults.empty()) throw Error(faults);
}

}  // namespace

void addInfo(CLI::App& app) {
  const auto call = std::make_shared<InfoCall>();
  auto& command = *app.add_subcommand("info", "Shows what containers and SBET files hold");
  command.footer(
      "Example: velorn info strip_1.kx trajectory.kx\n\n"
      "Files that end in .sbet or .out are read as SBET trajectories, all others as containers.\n"
      "What cannot be read is named, the rest is shown, and the exit status is 1.");
  command.add_option("FILE", call->files, "containers (.kx) and SBET files")
      ->required()
      ->type_name("");
  command.add_flag("--json", call->json, "one JSON document, see docs/commands.md");
  command.callback([call] { info(*call); });
}
