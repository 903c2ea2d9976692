// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "flight/chain/Adjustment.h"
#include "flight/report/AdjustmentText.h"
#include "host/commands/Commands.h"
#include "host/project/ModelOptions.h"
#include "host/terminal/LibraryMessages.h"
#include "host/terminal/Progress.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

struct AdjustCall {
  AdjustmentJob job;
  Model model;
  bool quiet = false;
};

AdjustmentOutcome adjustWithProgress(const AdjustCall& call) {
  const auto progress = std::make_shared<Progress>(call.quiet);
  const LibraryMessages messages(*progress, call.quiet);
  return adjust(call.job, progress);
}

void run(AdjustCall& call) {
  apply(call.model, call.job.strips.size());
  call.job.configuration = call.model.configuration;
  call.job.settings = call.model.settings;
  if (call.job.correspondences.empty()) {
    const auto& configuration = call.job.configuration;
    call.job.correspondences = configuration.RootPath / configuration.getCorrespondencePath();
  }
  checkJob(call.job);
  const AdjustmentOutcome outcome = adjustWithProgress(call);
  fmt::print("{}", summaryOf(outcome, call.job.settings.fewestGroundTruth > 0));
  requireConvergence(outcome.result.end, "raise --iterations");
  fmt::print("parameters written to {}\n", outcome.files.parameters.string());
}

}  // namespace

void addAdjust(CLI::App& app) {
  const auto call = std::make_shared<AdjustCall>();
  auto& command = *app.add_subcommand(
      "adjust",
      "Estimates the corrections of sensor, mounting and trajectory from correspondences");
  auto& job = call->job;
  command.add_option("STRIP", job.strips, "strip containers")->required()->type_name("FILE");
  command.add_option("--trajectory", job.trajectories, "trajectory containers")
      ->required()
      ->type_name("FILE");
  command.add_option("--ground-truth", job.groundTruth, "ground-truth container")
      ->required()
      ->type_name("FILE");
  command
      .add_option("--output", call->model.configuration.RootPath,
                  "root of the output folders 00_parameter, 01_status, 04_statistic")
      ->required()
      ->type_name("FOLDER");
  command
      .add_option("--correspondences", job.correspondences,
                  "folder of correspondence containers; default: 03_correspondences in the root")
      ->type_name("FOLDER");
  command
      .add_option("--suffix", call->model.configuration.FileSuffix,
                  "end of the names of the parameter files; default: date and time")
      ->type_name("TEXT");
  command.add_flag("--quiet", call->quiet, "no progress; warnings and results stay");
  addModelOptions(command, call->model);
  command.footer(
      "Example: velorn simulate demo --correspondences && velorn adjust demo/strip_*.kx\n"
      "  --trajectory demo/trajectory.kx --ground-truth demo/ground_truth.kx --output demo\n\n"
      "Exit status: 0 converged and written; 1 the job failed; 2 not understood; 3 out of steps;\n"
      "4 too little ground truth; 5 the solver failed; 6 a file cannot be written.");
  command.callback([call] { run(*call); });
}
