// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "host/Failure.h"
#include "host/adjustment/Job.h"
#include "host/adjustment/Summary.h"
#include "host/commands/Commands.h"
#include "host/terminal/LibraryMessages.h"
#include "host/terminal/Progress.h"

namespace {

struct AdjustCall {
  AdjustmentJob job;
  double interval = 86400.0;  // longest section [s]
  std::vector<int> locked;
  std::vector<std::string> held;
  bool isRelative = false, quiet = false;
};

void applyTo(AdjustmentJob& job, const AdjustCall& call) {
  auto& configuration = job.configuration;
  configuration.DefaultInterval.assign(3, call.interval);
  configuration.LockedStrips = {call.locked.begin(), call.locked.end()};
  if (call.isRelative) job.settings.fewestGroundTruth = 0;
  for (const auto& block : call.held) {
    if (block == "offsets") job.settings.estimateOffsets = false;
    if (block == "scales") job.settings.estimateScales = false;
    if (block == "misalignment") job.settings.estimateMisalignment = false;
    if (block == "lever-arm") job.settings.estimateLeverArm = false;
  }
}

AdjustmentOutcome adjustWithProgress(const AdjustCall& call) {
  const auto progress = std::make_shared<Progress>(call.quiet);
  const LibraryMessages messages(*progress, call.quiet);
  return adjust(call.job, progress);
}

void run(AdjustCall& call) {
  applyTo(call.job, call);
  if (call.job.correspondences.empty()) {
    const auto& configuration = call.job.configuration;
    call.job.correspondences = configuration.RootPath / configuration.getCorrespondencePath();
  }
  checkJob(call.job);
  const AdjustmentOutcome outcome = adjustWithProgress(call);
  fmt::print("{}", summaryOf(outcome, call.job.settings.fewestGroundTruth > 0));
  requireConvergence(outcome.result.end, "raise --iterations");
  fmt::print("parameters written to {}\n", outcome.parameterFile.string());
}

void addModel(CLI::App& command, AdjustCall& call) {
  auto& configuration = call.job.configuration;
  command
      .add_option("--model", configuration.TypeModel, "correction of the trajectory per section")
      ->check(CLI::IsMember({"BIAS", "LINEAR", "SPLINE", "HYBRID"}))
      ->capture_default_str();
  command.add_option("--interval", call.interval, "longest section, seconds")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  command
      .add_option("--iterations", configuration.NumberOfIterations, "limit of the solver's steps")
      ->check(CLI::PositiveNumber)
      ->capture_default_str();
  command
      .add_option("--weights", configuration.CellSizeWeights,
                  "of ground truth, roof, slope, bed and flat")
      ->delimiter(',')
      ->expected(5)
      ->type_name("W,W,W,W,W");
  command.add_option("--lock", call.locked, "strips whose trajectory is held, by their ids")
      ->delimiter(',')
      ->type_name("I,J");
  command.add_flag("--split-back-strips", configuration.SplitBackStrips,
                   "every second strip gets spline sections");
  command.add_option("--hold", call.held, "global corrections that are not estimated")
      ->delimiter(',')
      ->check(CLI::IsMember({"offsets", "scales", "misalignment", "lever-arm"}))
      ->type_name("BLOCK,BLOCK");
  command.add_flag("--relative", call.isRelative, "go without ground-truth correspondences");
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
      .add_option("--output", job.configuration.RootPath,
                  "root of the output folders 00_parameter, 01_status, 04_statistic")
      ->required()
      ->type_name("FOLDER");
  command
      .add_option("--correspondences", job.correspondences,
                  "folder of correspondence containers; default: 03_correspondences in the root")
      ->type_name("FOLDER");
  command
      .add_option("--suffix", job.configuration.FileSuffix,
                  "end of the names of the parameter files; default: date and time")
      ->type_name("TEXT");
  command.add_flag("--quiet", call->quiet, "no progress; warnings and results stay");
  addModel(command, *call);
  command.footer(
      "Example: velorn simulate demo --correspondences && velorn adjust demo/strip_*.kx\n"
      "  --trajectory demo/trajectory.kx --ground-truth demo/ground_truth.kx --output demo\n\n"
      "Exit status: 0 converged and written; 1 the job failed; 2 not understood; 3 out of steps;\n"
      "4 too little ground truth; 5 the solver failed; 6 a file cannot be written.");
  command.callback([call] { run(*call); });
}
