// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/project/ModelOptions.h"

#include <CLI/CLI.hpp>

#include "host/project/Bounds.h"

void addModelOptions(CLI::App& command, Velorn::Flights::ModelSettings& model) {
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
