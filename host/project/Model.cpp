// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/project/Model.h"

#include <CLI/CLI.hpp>

#include <fmt/format.h>

#include "host/Failure.h"
#include "host/project/Bounds.h"

void addModelOptions(CLI::App& command, Model& model) {
  auto& configuration = model.configuration;
  command
      .add_option("--model", configuration.TypeModel,
                  "correction of the trajectory per section: BIAS, LINEAR, SPLINE or HYBRID")
      ->check(CLI::IsMember({"BIAS", "LINEAR", "SPLINE", "HYBRID"}))
      ->capture_default_str();
  command.add_option("--interval", model.interval, "longest section, seconds")
      ->check(within(1e-3, 1e6))
      ->capture_default_str();
  command
      .add_option("--iterations", configuration.NumberOfIterations, "limit of the solver's steps")
      ->check(within(1, 1e6))
      ->capture_default_str();
  command
      .add_option("--weights", configuration.CellSizeWeights,
                  "of ground truth, roof, slope, bed and flat")
      ->delimiter(',')
      ->expected(5)
      ->check(within(1e-6, 1e6))
      ->capture_default_str()
      ->type_name("W,W,W,W,W");
  command
      .add_option("--lock", model.locked,
                  "strips whose trajectory is held, by their places in the order of the paths, "
                  "from 0")
      ->delimiter(',')
      ->type_name("I,J");
  command.add_flag("--split-back-strips", configuration.SplitBackStrips,
                   "every second strip gets spline sections");
  command
      .add_option("--hold", model.held,
                  "global corrections that are not estimated: offsets, scales, misalignment or "
                  "lever-arm")
      ->delimiter(',')
      ->check(CLI::IsMember({"offsets", "scales", "misalignment", "lever-arm"}))
      ->type_name("BLOCK,BLOCK");
  command.add_flag("--relative", model.isRelative,
                   "ground truth may be missing or too little; what there is of it still counts");
}

void apply(Model& model, std::size_t strips) {
  auto& configuration = model.configuration;
  configuration.DefaultInterval.assign(3, model.interval);
  for (const int strip : model.locked) {
    if (strip >= 0 && static_cast<std::size_t>(strip) < strips) continue;
    throw Failure(fmt::format("--lock {}: there are {} strips, counted from 0", strip, strips),
                  misuse);
  }
  configuration.LockedStrips = {model.locked.begin(), model.locked.end()};
  if (model.isRelative) model.settings.fewestGroundTruth = 0;
  for (const auto& block : model.held) {
    if (block == "offsets") model.settings.estimateOffsets = false;
    if (block == "scales") model.settings.estimateScales = false;
    if (block == "misalignment") model.settings.estimateMisalignment = false;
    if (block == "lever-arm") model.settings.estimateLeverArm = false;
  }
}
