// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "flight/report/Description.h"
#include "flight/report/Listing.h"
#include "host/commands/Commands.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

struct InfoCall {
  std::vector<std::filesystem::path> files;
  bool json = false;
};

/// Prints everything that can be read before it gives up on what cannot.
void info(const InfoCall& call) {
  using Json = nlohmann::ordered_json;
  Json documents = Json::array();
  std::string faults;
  for (const auto& file : call.files) {
    Description one = describe(file);
    if (!call.json) std::cout << listingOf(one.document) << std::flush;
    if (call.json) documents.push_back(std::move(one.document));
    for (const auto& fault : one.faults) faults += (faults.empty() ? "" : "\n") + fault;
  }
  if (call.json) {
    const Json document{{"files", std::move(documents)}};
    std::cout << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
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
