// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <map>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "host/commands/Commands.h"
#include "host/project/Bounds.h"
#include "host/terminal/Result.h"
#include "host/terminal/Telling.h"
#include <velorn/flight/Import.h>
#include <velorn/flight/Reports.h>

using namespace Velorn::Flights;

namespace {

struct ImportCall {
  ImportSettings options;
  std::vector<double> leverArm{0, 0, 0}, misalignment{0, 0, 0};
  bool quiet = false;
};

void print(const ImportReport& report) {
  for (const auto& strip : report.strips) {
    printResult("{}: {} points, {}\n", strip.file.string(), strip.points,
                timesText(strip.first, strip.last, strip.week));
  }
  for (const auto& trajectory : report.trajectories) printResult("{}\n", trajectory.string());
  if (report.patches > 0) {
    printResult("{}: {} points on {} patches\n", report.groundTruth.string(),
                report.groundTruthPoints, report.patches);
  }
  printResult("EPSG:{}; heights count as ellipsoidal\n", report.epsg);
}

void import(ImportCall& call) {
  auto& options = call.options;
  options.leverArm = {call.leverArm[0], call.leverArm[1], call.leverArm[2]};
  options.misalignment = {call.misalignment[0], call.misalignment[1], call.misalignment[2]};
  print([&] {
    Telling telling(call.quiet);
    return importFlight(options, telling.watch());
  }());
}

void addFiles(CLI::App& command, ImportSettings& options) {
  command.add_option("LAS", options.strips, "point files, LAS 1.0 to 1.4")
      ->required()
      ->type_name("FILE");
  command
      .add_option("--trajectory", options.trajectory.files,
                  "SBET files (.sbet, .out) or delimited text")
      ->required()
      ->type_name("FILE");
  command
      .add_option("--control", options.control,
                  "surveyed points: CSV of E,N,h, with normals nx,ny,nz and a radius if they are "
                  "patches")
      ->type_name("FILE");
  command.add_option("--output", options.output, "folder of the containers")
      ->required()
      ->type_name("FOLDER");
}

void addMounting(CLI::App& command, ImportCall& call) {
  command
      .add_option("--lever-arm", call.leverArm,
                  "from the trajectory's reference to the scanner: forward, right, down, metres")
      ->delimiter(',')
      ->expected(3)
      ->check(within(-1000, 1000))
      ->type_name("X,Y,Z");
  command
      .add_option("--misalignment", call.misalignment,
                  "that the points were computed with: roll, pitch, yaw, degrees")
      ->delimiter(',')
      ->expected(3)
      ->check(within(-360, 360))
      ->type_name("R,P,Y");
}

/// Of trajectories that are text.
void addText(CLI::App& command, TextTrajectoryFormat& format) {
  const std::map<std::string, AngleUnit> units{{"degrees", AngleUnit::Degrees},
                                               {"radians", AngleUnit::Radians}};
  command
      .add_option("--columns", format.columns,
                  "of a text trajectory: time, latitude and longitude or easting and northing, "
                  "height, roll, pitch, heading; - passes over one")
      ->type_name("WORDS")
      ->capture_default_str();
  command.add_option("--position-unit", format.positionUnit, "of its latitude and longitude")
      ->transform(CLI::CheckedTransformer(units).description(""))
      ->type_name("degrees|radians");
  command.add_option("--attitude-unit", format.attitudeUnit, "of its roll, pitch and heading")
      ->transform(CLI::CheckedTransformer(units).description(""))
      ->type_name("degrees|radians");
  command
      .add_option("--heading", format.heading, "whether its headings count from true or grid north")
      ->transform(CLI::CheckedTransformer(
                      std::map<std::string, NorthReference>{{"true", NorthReference::True},
                                                            {"grid", NorthReference::Grid}})
                      .description(""))
      ->type_name("true|grid");
}

void addOptions(CLI::App& command, ImportCall& call) {
  ImportSettings& options = call.options;
  addFiles(command, options);
  addMounting(command, call);
  command.add_option("--epsg", options.epsg, "projection, when the LAS files do not say it")
      ->type_name("CODE");
  command.add_option("--week", options.week, "GPS week in which the trajectory begins")
      ->check(within(0, 100000))
      ->type_name("NUMBER");
  command
      .add_option("--gap", options.gap, "seconds without a point that part two strips of one file")
      ->check(within(0.001, 1e6))
      ->capture_default_str();
  command
      .add_option("--trajectory-gap", options.trajectory.longestGap,
                  "seconds without a record that are told")
      ->check(within(0.001, 1e6))
      ->capture_default_str();
  addText(command, options.trajectory.text);
  command
      .add_option("--control-radius", options.controlRadius,
                  "of patches whose file does not say it, metres")
      ->check(within(0, 100))
      ->capture_default_str();
  command
      .add_option("--control-spacing", options.controlSpacing,
                  "of the points that a patch becomes, metres")
      ->check(within(0.01, 100))
      ->capture_default_str();
  command
      .add_option("--decompress", options.decompress,
                  "command that makes LAS of compressed files, such as \"laszip -i {in} -o "
                  "{out}\"")
      ->type_name("COMMAND");
  command.add_flag("--overwrite", options.overwrite, "replace containers of an earlier import");
  command.add_flag("--quiet", call.quiet, "no progress; warnings and results stay");
}

}  // namespace

void addImport(CLI::App& app) {
  const auto call = std::make_shared<ImportCall>();
  auto& command =
      *app.add_subcommand("import", "Containers of a run from LAS files, a trajectory and control");
  command.footer(
      "Example: velorn import strips/*.las --trajectory flight.sbet --control control.csv \\\n"
      "  --lever-arm 0.12,-0.08,0.45 --output flight\n\n"
      "Scanner coordinates are computed from the points, the trajectory and the mounting that the\n"
      "points were computed with.");
  addOptions(command, *call);
  command.callback([call] { import(*call); });
}
