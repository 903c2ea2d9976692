// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "host/commands/Commands.h"
#include "host/project/SettingFlags.h"
#include "host/terminal/Result.h"
#include "host/terminal/Telling.h"
#include <velorn/flight/Adjust.h>

using namespace Velorn::Flights;

namespace {

struct AdjustCall {
  AdjustmentInput input;
  FlightSettings settings;  ///< of which the model counts
  bool quiet = false;
};

void run(AdjustCall& call) {
  auto& input = call.input;
  auto& model = call.settings.model;
  complete(model, input.strips.size());
  input.configuration = model.configuration;
  input.settings = solverSettingsOf(model);
  if (input.correspondences.empty()) {
    input.correspondences =
        input.configuration.RootPath / input.configuration.getCorrespondencePath();
  }
  const AdjustmentReport report = [&] {
    Telling telling(call.quiet);
    return adjust(input, telling.watch());
  }();
  printResult("{}", textOf(report, input.settings.fewestGroundTruth > 0));
  requireConvergence(report.solver, "raise --iterations");
  printResult("parameters written to {}\n", report.files.parameters.string());
}

}  // namespace

void addAdjust(CLI::App& app) {
  const auto call = std::make_shared<AdjustCall>();
  auto& command = *app.add_subcommand(
      "adjust",
      "Estimates the corrections of sensor, mounting and trajectory from correspondences");
  auto& input = call->input;
  command.add_option("STRIP", input.strips, "strip containers")->required()->type_name("FILE");
  command.add_option("--trajectory", input.trajectories, "trajectory containers")
      ->required()
      ->type_name("FILE");
  command.add_option("--ground-truth", input.groundTruth, "ground-truth container")
      ->required()
      ->type_name("FILE");
  command
      .add_option("--output", call->settings.configuration().RootPath,
                  "root of the output folders 00_parameter, 01_status, 04_statistic")
      ->required()
      ->type_name("FOLDER");
  command
      .add_option("--correspondences", input.correspondences,
                  "folder of correspondence containers; default: 03_correspondences in the root")
      ->type_name("FOLDER");
  command
      .add_option("--suffix", call->settings.configuration().FileSuffix,
                  "end of the names of the parameter files; default: date and time")
      ->type_name("TEXT");
  command.add_flag("--quiet", call->quiet, "no progress; warnings and results stay");
  addModelFlags(command, call->settings);
  command.footer(
      "Example: velorn simulate demo --correspondences && velorn adjust demo/strip_*.kx\n"
      "  --trajectory demo/trajectory.kx --ground-truth demo/ground_truth.kx --output demo\n\n"
      "Exit status: 0 converged and written; 1 the job failed; 2 not understood; 3 out of steps;\n"
      "4 too little ground truth; 5 the solver failed; 6 a file cannot be written.");
  command.callback([call] { run(*call); });
}
