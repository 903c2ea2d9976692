// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "flight/chain/StripsGeoreferencing.h"
#include "host/commands/Commands.h"
#include "host/terminal/LibraryMessages.h"
#include "host/terminal/Progress.h"
#include <velorn/flight/Error.h>

using namespace Velorn::Flights;

namespace {

struct GeoreferenceCall {
  GeoreferencingJob job;
  std::vector<int> selected;
  bool inPlace = false, quiet = false;
};

void checkWhere(const GeoreferenceCall& call) {
  if (call.inPlace == call.job.outputFolder.empty()) return;
  throw Error(call.inPlace ? "--output and --in-place contradict each other"
                           : "where to? --output FOLDER, or --in-place to change the strips",
              Error::BadSettings);
}

JobResult runWithProgress(const GeoreferenceCall& call) {
  Progress progress(call.quiet);
  const LibraryMessages messages(progress, call.quiet);
  return runJob(call.job, progress,
                [&progress](const std::string& line) { progress.message(line); });
}

void georeference(GeoreferenceCall& call) {
  checkWhere(call);
  call.job.selected = {call.selected.begin(), call.selected.end()};
  checkJob(call.job);
  const JobResult result = runWithProgress(call);
  for (const auto& strip : result.unknown) {
    fmt::print("{}: not in the adjustment; the global corrections alone act on it\n", strip);
  }
  const std::string where = call.inPlace ? "in place" : "to " + call.job.outputFolder.string();
  if (result.faults > 0) {
    const std::size_t right = result.strips - result.faults;
    throw Error(fmt::format("{} of {} strips with a fault, named above; {} without one written {}",
                            result.faults, result.strips, right, where),
                result.notSaved > 0 ? Error::NoSpace : Error::BadInput);
  }
  fmt::print("{} strips, {} points, {:.1f} s: {} coordinates written {}\n", result.strips,
             result.points, result.seconds, call.job.inverse ? "scanner" : "world", where);
}

void addInputs(CLI::App& command, GeoreferencingJob& job) {
  command.add_option("STRIP", job.strips, "strip containers")->required()->type_name("FILE");
  command.add_option("--trajectory", job.trajectories, "trajectory containers")
      ->required()
      ->type_name("FILE");
  command.add_option("--sections", job.sections, "section file of an adjustment")
      ->type_name("FILE");
  command.add_option("--parameters", job.parameters, "its parameter file")->type_name("FILE");
  command.add_option("--strip-ids", job.stripIds, "its strip id file")->type_name("FILE");
}

void addOptions(CLI::App& command, GeoreferenceCall& call) {
  GeoreferencingJob& job = call.job;
  addInputs(command, job);
  command
      .add_option("--output", job.outputFolder,
                  "folder for the results, <strip>_SA.kx; made when missing")
      ->type_name("FOLDER");
  command.add_flag("--in-place", call.inPlace, "change the strips themselves");
  command.add_flag("--inverse", job.inverse, "scanner coordinates from world coordinates");
  command.add_option("--select", call.selected, "only these strips of the list, counted from 0")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->type_name("I,J");
  command.add_flag("--compress", job.compress, "deflate what is written");
  command.add_flag("--report-early-times", job.reportEarlyTimes,
                   "a time that is not after the trajectory's first is told");
  command.add_flag("--overwrite", job.overwrite, "replace outputs of an earlier run");
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
