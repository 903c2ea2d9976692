// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The program `velorn`. Every job is a subcommand in host/commands/; this file only puts them
// together.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <string_view>

#include "host/ExitStatus.h"
#include "host/KeptMemory.h"
#include "host/commandline/CommandTable.h"
#include "host/commandline/HelpText.h"
#include "host/commandline/Misuse.h"
#include "host/commands/Commands.h"
#include "host/terminal/Interruption.h"
#include "platform/morvane/Console.h"
#include "platform/plome/Printable.h"
#include <velorn/SolverLog.h>

using namespace Velorn::Flights;

namespace {

constexpr const char* description =
    "Strip adjustment of airborne laser scanning: estimates the errors of sensor, mounting and "
    "trajectory from overlapping strips and ground truth, and georeferences every strip anew.";

constexpr const char* footer =
    "`velorn help COMMAND` shows the options of a command and an example. Results go to standard "
    "output, messages to standard error.\n\n"
    "Exit status: 0 all went well; 1 bad input, or the job failed; 2 the call was not understood; "
    "3 the solver did not converge; 4 too little ground truth; 5 the solver failed; 6 a file "
    "cannot be written; 130 or 143 interrupted.";

/// Standard output is for results: `velorn info --json` is read by programs.
void writeMessage(std::string_view text) {
  const std::string line = Plome::printable(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

std::string help(const CLI::App* command, const std::string& call, CLI::AppFormatMode /*mode*/) {
  return CommandLine::helpText(CommandLine::tableOf(*command), call);
}

void addCommands(CLI::App& app) {
  addImport(app);
  addInit(app);
  addRun(app);
  addRasterize(app);
  addMatch(app);
  addCorrespondences(app);
  addAdjust(app);
  addGeoreference(app);
  addExport(app);
  addInfo(app);
  addCompare(app);
  addSimulate(app);
  for (auto* command : app.get_subcommands({})) command->group("Commands");
  addCompletion(app);
  addManPage(app);
  addHelp(app);  // knows those before it
}

void run(int argc, char** argv) {
  CLI::App app(description, "velorn");
  app.formatter_fn(help);  // before the commands, which take over what there is
  app.set_help_flag("-h,--help", "this help");
  app.set_version_flag("--version", "velorn " VELORN_VERSION, "name and version of the program");
  app.footer(footer);
  app.require_subcommand(0, 1);
  addCommands(app);
  try {
    app.parse(argc, argv);
    if (app.get_subcommands().empty()) std::cout << app.help();
  } catch (const CLI::ParseError& error) {
    const bool wasAnswered = error.get_exit_code() == 0;  // --help, --version
    if (!wasAnswered) throw Error(CommandLine::misuseText(app, error), Error::BadSettings);
    app.exit(error);
  }
}

/// A result that a full disk cut off is none.
void checkStandardOutput() {
  std::cout.flush();
  if (!std::cout || std::fflush(stdout) != 0) {
    throw Error("standard output: cannot be written", Error::NoSpace);
  }
}

}  // namespace

int main(int argc, char** argv) {
  keepFreedMemory();
  Velorn::keepSolverLogQuiet();
  endWhenInterrupted();
  std::signal(SIGXFSZ, SIG_IGN);  // a file that may not grow further is a write error
  Morvane::Console::redirect(writeMessage);
  try {
    run(argc, argv);
    checkStandardOutput();
    return 0;
  } catch (const Error& error) {
    writeMessage(std::string("velorn: ") + error.what());
    return exitStatusOf(error.kind());
  } catch (const std::bad_alloc&) {
    writeMessage("velorn: not enough memory");
    return jobFailed;
  } catch (const std::exception& error) {
    writeMessage(std::string("velorn: ") + error.what());
    return jobFailed;
  }
}
