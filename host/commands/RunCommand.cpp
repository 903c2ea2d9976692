// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The commands that take a project: run, its first steps alone, what they matched, and init.
#include <CLI/CLI.hpp>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commands/Commands.h"
#include "host/project/ProjectFile.h"
#include "host/project/SettingFlags.h"
#include "host/terminal/Result.h"
#include "host/terminal/Telling.h"
#include "platform/plome/ReplacedFile.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/Flight.h>
#include <velorn/flight/WriteCorrespondences.h>

using namespace Velorn::Flights;

namespace {

/// A command with its project.
struct ProjectCall {
  explicit ProjectCall(CLI::App& app) : command(app) {}

  CLI::App& command;
  std::filesystem::path file;  ///< empty: all was said by flags
  FlightSettings settings;     ///< the flags refer to it
  bool overwrite = false, quiet = false;
};

std::shared_ptr<ProjectCall> addProjectCommand(CLI::App& app, const char* name, const char* what,
                                               bool runs = true) {
  auto& command = *app.add_subcommand(name, what);
  auto call = std::make_shared<ProjectCall>(command);
  command.add_option("PROJECT", call->file, "project file, see `velorn init`")->type_name("FILE");
  addFlags(command, call->settings,
           [&](const Setting& setting) { return runs || setting.use == SettingUse::Project; });
  return call;
}

void addSwitches(ProjectCall& call) {
  call.command.add_flag("--quiet", call.quiet, "no progress; warnings and results stay");
}

void readSettings(ProjectCall& call) {
  if (!call.file.empty()) readProject(call.file, givenFlags(call.command), call.settings);
}

/// What a run tells by the way is in its summary.
Watch watchOf(const ProjectCall& call, Telling& telling) {
  Watch watch = telling.watch();
  if (call.quiet) watch.message = {};
  return watch;
}

/// Also of a run whose solver did not converge.
RunReport reportOf(Flight& flight, std::exception_ptr& notConverged) {
  try {
    return flight.run();
  } catch (const Error& error) {
    if (error.kind() != Error::NoConvergence && error.kind() != Error::SolverFailed) throw;
    notConverged = std::current_exception();
    return flight.report();
  }
}

/// @param steps  that are done; empty: those of the project
void runSteps(ProjectCall& call, const std::vector<std::string>& steps) {
  readSettings(call);
  if (!steps.empty()) call.settings.steps = steps;
  std::exception_ptr notConverged;
  const RunReport report = [&] {
    Telling telling(call.quiet);
    Flight flight(call.settings, watchOf(call, telling));
    return reportOf(flight, notConverged);
  }();
  printResult("{}", textOf(report));
  if (notConverged) std::rethrow_exception(notConverged);
}

void addSteps(CLI::App& app, const char* name, const char* what, const char* word) {
  const auto call = addProjectCommand(app, name, what);
  addSwitches(*call);
  call->command.footer(
      fmt::format("Example: velorn {} flight.velorn\n\n"
                  "The same as `velorn run` with --steps \"{}\".",
                  name, word));
  call->command.callback([call, word] { runSteps(*call, {word}); });
}

void showCorrespondences(ProjectCall& call, const CorrespondenceWish& wish) {
  readSettings(call);
  const auto written = [&] {
    Telling telling(call.quiet);
    return writeCorrespondences(call.settings, wish, watchOf(call, telling));
  }();
  std::vector<std::string> counts;
  for (std::size_t k = 0; k < fateCount; ++k) {
    counts.push_back(fmt::format("{} {}", written.counts[k], nameOf(static_cast<Fate>(k))));
  }
  printResult("{}: candidates of round {}: {}\n", written.file.string(), written.round,
              fmt::join(counts, ", "));
  if (!written.isAdjusted) {
    printResult("round {} led to no model: distances after it are not known\n", written.round);
  }
}

void writeProject(const ProjectCall& call) {
  const auto& file = call.file;
  std::error_code ignored;
  if (!call.overwrite && std::filesystem::exists(std::filesystem::symlink_status(file, ignored))) {
    throw Error(file.string() + ": exists; --overwrite replaces it");
  }
  const auto text = projectText(file, givenFlags(call.command), call.settings);
  if (const auto fault = Plome::replaceFile(file, text); !fault.empty()) {
    throw Error(fault, Error::NoSpace);
  }
  printResult("{} written; `velorn run {}` runs it\n", file.string(), file.string());
}

}  // namespace

void addRun(CLI::App& app) {
  const auto call = addProjectCommand(
      app, "run", "From strips, trajectory and ground truth to adjusted strips, and a summary");
  addSwitches(*call);
  call->command.footer(
      "Example: velorn init flight.velorn --strips 'strips/*.kx' --trajectory trajectory.kx\n"
      "  --ground-truth control.kx && velorn run flight.velorn\n\n"
      "Every key of the project file is a flag too, and flags win. Steps that are done already "
      "are\n"
      "skipped. docs/run.md says what is done and what summary.json holds, docs/settings.md every "
      "key.");
  call->command.callback([call] { runSteps(*call, {}); });
}

void addRasterize(CLI::App& app) {
  addSteps(app, "rasterize", "Normals, terrain classes and rasters of strips and ground truth",
           "+rasterize");
}

void addMatch(CLI::App& app) {
  addSteps(app, "match", "Correspondences between rasterized strips, and with the ground truth",
           "+correspondences");
}

void addCorrespondences(CLI::App& app) {
  const auto call = addProjectCommand(
      app, "correspondences",
      "What a round of a run matched, and what it left out, as LAS or CSV to look at");
  const auto wish = std::make_shared<CorrespondenceWish>();
  call->command.add_option("--round", wish->round, "number of the round; default: the last one")
      ->check(CLI::Range(1U, 100U).description(""))
      ->type_name("N");
  call->command
      .add_option("--output", wish->output,
                  "file that ends in .las or .csv; default: correspondences_round<N>.las in the "
                  "root folder")
      ->type_name("FILE");
  call->command.add_flag("--overwrite", wish->overwrite, "replace the file");
  addSwitches(*call);
  call->command.footer(
      "Example: velorn correspondences flight.velorn --round 2 --output round_2.las\n\n"
      "The settings are those of the run: the project, and the flags that the run was given.");
  call->command.callback([call, wish] { showCorrespondences(*call, *wish); });
}

void addInit(CLI::App& app) {
  const auto call =
      addProjectCommand(app, "init", "Writes a project file with every key explained", false);
  call->command.get_option("PROJECT")->required();
  call->command.add_flag("--overwrite", call->overwrite, "replace the file");
  call->command.footer("Example: velorn init flight.velorn --strips 'strips/*.kx'");
  call->command.callback([call] { writeProject(*call); });
}
