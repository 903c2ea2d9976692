// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "host/commands/Commands.h"
#include "host/terminal/Result.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/Simulate.h>

using namespace Velorn::Flights;

namespace {

struct Call {
  std::string folder, correspondences;
  SimulationSettings options;
  bool noErrors = false, overwrite = false, quiet = false;
};

std::uint64_t correspondencesIn(const std::string& text) {
  std::uint64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && stop == end) return number;
  throw Error(fmt::format("--correspondences={}: not a whole number", text), Error::BadSettings);
}

void run(Call call) {
  if (call.noErrors) call.options.errorScale = 0.0;
  if (!call.correspondences.empty()) {
    call.options.correspondences = correspondencesIn(call.correspondences);
  }
  const auto begin = std::chrono::steady_clock::now();
  Watch watch;
  watch.message = [&call](const std::string& line) {
    if (call.quiet) return;
    printResult("{}\n", line);
    std::fflush(stdout);
  };
  const auto made = simulate(call.folder, call.options, call.overwrite, watch);
  const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
  printResult(
      "{}: {} strips with {} points, ground truth of {} patches, {} planes; {} files in {:.1f} s\n",
      call.folder, made.strips, made.points, made.patches, made.planes, made.files,
      seconds.count());
}

}  // namespace

void addSimulate(CLI::App& app) {
  const auto call = std::make_shared<Call>();
  auto& options = call->options;
  auto* command = app.add_subcommand(
      "simulate", "Writes a synthetic flight: strips, trajectory, ground truth and all its errors");
  command->add_option("OUT", call->folder, "folder to write into; it is made if needed")
      ->required()
      ->type_name("FOLDER");
  command->add_option("--points", options.points, "laser pulses in all")->capture_default_str();
  command->add_option("--seed", options.seed, "the same seed gives the same bytes")
      ->capture_default_str();
  command->add_option("--strips", options.strips, "parallel strips; two crossing ones are added")
      ->capture_default_str();
  command->add_option("--length", options.length, "length of a parallel strip [m]")
      ->capture_default_str();
  command
      ->add_option("--height", options.height,
                   "flying height above ground [m]; the crossing strips fly 1.35 times as high")
      ->capture_default_str();
  command->add_option("--speed", options.speed, "flying speed [m/s]")->capture_default_str();
  command
      ->add_option("--terrain-scale", options.terrainScale,
                   "size of fields and houses in units of 40 m and some 22 x 16 m")
      ->capture_default_str();
  command->add_option("--range-noise", options.rangeNoise, "standard deviation [m]")
      ->capture_default_str();
  command->add_option("--angle-noise", options.angleNoise, "standard deviation [degree]")
      ->capture_default_str();
  auto* scale = command
                    ->add_option("--error-scale", options.errorScale,
                                 "factor on all injected errors; the noise is not changed")
                    ->capture_default_str();
  command->add_option("--only-errors", options.onlyErrors,
                      "inject one kind of errors only: offsets, scales, misalignment, lever-arm,\n"
                      "position or attitude (the last two of the trajectory)");
  command->add_flag("--no-errors", call->noErrors, "the same as --error-scale 0")->excludes(scale);
  command->add_flag("!--no-slow-errors", options.slowErrors,
                    "errors of the trajectory constant and linear in time only");
  command->add_flag("--flat-control", options.flatControl,
                    "ground truth on horizontal planes only");
  // As a text: a flag takes for a number whatever begins like one.
  command->add_flag("--correspondences{50000}", call->correspondences,
                    "also correspondences from the known planes, ready for the adjustment;\n"
                    "=N for at most N of them");
  command->add_option("--epsg", options.epsg, "projection, a northern UTM zone")
      ->capture_default_str();
  command->add_flag("--overwrite", call->overwrite, "replace the flight that OUT holds");
  command->add_flag("--quiet", call->quiet, "only the last line, none per strip");
  command->footer(
      "Example: velorn simulate demo --points 500000 --seed 7\n\n"
      "This writes demo/strip_01.kx ..., trajectory.kx, ground_truth.kx and truth.json;\n"
      "docs/simulation.md says what they hold.");
  command->callback([call] { run(*call); });
}
