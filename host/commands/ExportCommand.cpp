// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "host/commands/Commands.h"
#include "host/terminal/Result.h"
#include "host/terminal/Telling.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/Export.h>

using namespace Velorn::Flights;

namespace {

struct ExportCall {
  ExportSettings options;
  ModelFiles model;
  std::vector<std::string> only;
  bool quiet = false;
};

void takeModel(ExportCall& call) {
  const auto& [sections, parameters, stripIds] = call.model;
  const int given = int(!sections.empty()) + int(!parameters.empty()) + int(!stripIds.empty());
  if (given == 0) return;
  if (given < 3) {
    throw Error("--sections, --parameters and --strip-ids are needed all three, or none",
                Error::BadSettings);
  }
  call.options.model = call.model;
}

void takeWishes(ExportCall& call) {
  if (call.only.empty()) return;
  Wishes wishes;
  for (const auto& word : call.only) {
    wishes.strips = wishes.strips || word == "strips";
    wishes.mounting = wishes.mounting || word == "mounting";
    wishes.trajectory = wishes.trajectory || word == "trajectory";
  }
  call.options.wishes = wishes;
}

void exportFiles(ExportCall& call) {
  auto& options = call.options;
  takeModel(call);
  takeWishes(call);
  if (!options.trajectories.empty() && !options.model && options.root.empty()) {
    throw Error(
        "--trajectory needs the files of an adjustment: --root, or --sections, --parameters and "
        "--strip-ids",
        Error::BadSettings);
  }
  const ExportReport report = [&] {
    Telling telling(call.quiet);
    return exportFlight(options, telling.watch());
  }();
  for (const auto& [file, content] : report.files) printResult("{}: {}\n", file.string(), content);
}

void addInputs(CLI::App& command, ExportCall& call) {
  command.add_option("STRIP", call.options.strips, "containers of adjusted points, <strip>_SA.kx")
      ->type_name("FILE");
  command
      .add_option("--root", call.options.root,
                  "root folder of a run; its strips, adjustment and trajectory count where no "
                  "others are given")
      ->type_name("FOLDER");
  command.add_option("--sections", call.model.sections, "section file of an adjustment")
      ->type_name("FILE");
  command.add_option("--parameters", call.model.parameters, "its parameter file")
      ->type_name("FILE");
  command.add_option("--strip-ids", call.model.stripIds, "its strip id file")->type_name("FILE");
  command
      .add_option("--trajectory", call.options.trajectories,
                  "containers of the trajectory that it used")
      ->type_name("FILE");
}

void addOptions(CLI::App& command, ExportCall& call) {
  addInputs(command, call);
  command
      .add_option(
          "--source-folder", call.options.sourceFolder,
          "where the LAS files lie that the strips were imported from, when they have moved")
      ->type_name("FOLDER");
  command.add_option("--output", call.options.output, "folder for the results")
      ->required()
      ->type_name("FOLDER");
  command.add_option("--only", call.only, "part of the results: strips, mounting, trajectory")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(CLI::IsMember({"strips", "mounting", "trajectory"}))
      ->type_name("WORDS");
  command.add_flag("--overwrite", call.options.overwrite, "replace files of an earlier export");
  command.add_flag("--quiet", call.quiet, "no progress; warnings and results stay");
}

}  // namespace

void addExport(CLI::App& app) {
  const auto call = std::make_shared<ExportCall>();
  auto& command = *app.add_subcommand(
      "export", "Adjusted strips as LAS, the adjusted mounting and the adjusted trajectory");
  command.footer(
      "Example: velorn export --root flight/run --output delivery\n\n"
      "LAS files are written of strips that `velorn import` made: the same records in the same\n"
      "order with new coordinates. The strips stand before the options.");
  addOptions(command, *call);
  command.callback([call] { exportFiles(*call); });
}
