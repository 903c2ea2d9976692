// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The program `velorn`. Every job is a subcommand in host/commands/; this file only puts them
// together.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>

#include "host/Failure.h"
#include "host/commands/Commands.h"

namespace {

/// Status of a call that the program does not understand; a job that fails ends with 1.
constexpr int misuse = 2;

constexpr const char* description =
    "Strip adjustment of airborne laser scanning: estimates the errors of sensor, mounting and\n"
    "trajectory from overlapping strips and ground truth, and georeferences every strip anew.\n";

constexpr const char* footer =
    "This version holds the foundation (containers, projections, plots, run configuration,\n"
    "trajectory, sections and unknowns);\n"
    "the commands that simulate, import, adjust and report follow.";

int run(int argc, char** argv) {
  CLI::App app(description, "velorn");
  app.set_version_flag("--version", "velorn " VELORN_VERSION);
  app.footer(footer);
  app.require_subcommand(0, 1);
  addSimulate(app);
  addGeoreference(app);
  addInfo(app);
  try {
    app.parse(argc, argv);
    if (!app.get_subcommands().empty()) return 0;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : misuse;
  }
  std::cerr << app.help();
  return misuse;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const Failure& failure) {
    std::cerr << "velorn: " << failure.what() << '\n';
    return failure.exitStatus();
  } catch (const std::exception& error) {
    std::cerr << "velorn: " << error.what() << '\n';
    return 1;
  }
}
