// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "host/commands/Commands.h"
#include "host/terminal/Result.h"
#include "host/terminal/Telling.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/Georeference.h>

using namespace Velorn::Flights;

namespace {

struct GeoreferenceCall {
  GeoreferencingInput input;
  std::vector<int> selected;
  bool inPlace = false, quiet = false;
};

void checkWhere(const GeoreferenceCall& call) {
  if (call.inPlace == call.input.outputFolder.empty()) return;
  throw Error(call.inPlace ? "--output and --in-place contradict each other"
                           : "where to? --output FOLDER, or --in-place to change the strips",
              Error::BadSettings);
}

void georeference(GeoreferenceCall& call) {
  checkWhere(call);
  call.input.selected = {call.selected.begin(), call.selected.end()};
  const auto report = [&] {
    Telling telling(call.quiet);
    return georeference(call.input, telling.watch());
  }();
  for (const auto& strip : report.unknown) {
    printResult("{}: not in the adjustment; the global corrections alone act on it\n", strip);
  }
  const std::string where = call.inPlace ? "in place" : "to " + report.folder.string();
  printResult("{} strips, {} points, {:.1f} s: {} coordinates written {}\n", report.strips,
              report.points, report.seconds, call.input.inverse ? "scanner" : "world", where);
}

void addInputs(CLI::App& command, GeoreferencingInput& input) {
  command.add_option("STRIP", input.strips, "strip containers")->required()->type_name("FILE");
  command.add_option("--trajectory", input.trajectories, "trajectory containers")
      ->required()
      ->type_name("FILE");
  command.add_option("--sections", input.model.sections, "section file of an adjustment")
      ->type_name("FILE");
  command.add_option("--parameters", input.model.parameters, "its parameter file")
      ->type_name("FILE");
  command.add_option("--strip-ids", input.model.stripIds, "its strip id file")->type_name("FILE");
}

void addOptions(CLI::App& command, GeoreferenceCall& call) {
  GeoreferencingInput& input = call.input;
  addInputs(command, input);
  command
      .add_option("--output", input.outputFolder,
                  "folder for the results, <strip>_SA.kx; made when missing")
      ->type_name("FOLDER");
  command.add_flag("--in-place", call.inPlace, "change the strips themselves");
  command.add_flag("--inverse", input.inverse, "scanner coordinates from world coordinates");
  command.add_option("--select", call.selected, "only these strips of the list, counted from 0")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("I,J");
  command.add_flag("--compress", input.compress, "deflate what is written");
  command.add_flag("--report-early-times", input.reportEarlyTimes,
                   "a time that is not after the trajectory's first is told");
  command.add_flag("--overwrite", input.overwrite, "replace outputs of an earlier run");
  command.add_flag("--quiet", call.quiet, "no progress; warnings and results stay");
}

}  // namespace

void addGeoreference(CLI::App& app) {
  const auto call = std::make_shared<GeoreferenceCall>();
  auto& command = *app.add_subcommand("georeference",
                                      "World coordinates of strips from their scanner "
                                      "coordinates, or the inverse");
  command.footer(
      "Example: velorn georeference strips/*.kx --trajectory trajectory.kx --output adjusted\n\n"
      "Lever arm and misalignment are the trajectory's; with --sections, --parameters and\n"
      "--strip-ids the result of an adjustment counts instead. The strips stand before the "
      "options.");
  addOptions(command, *call);
  command.callback([call] { georeference(*call); });
}
