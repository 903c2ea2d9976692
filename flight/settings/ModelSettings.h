// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What is estimated, and how: the choices of an adjustment that a user makes by keys or flags.
#pragma once

#include <string>
#include <vector>

#include <velorn/CeresOptimization.h>
#include <velorn/InputParameter.h>

namespace Velorn::Flights {

struct Model {
  /// With the weight 3 of the ground truth: at 1 the noise of many pairs shrinks a block whose
  /// sections are free, at 10 the ground truth bends it.
  Model() { configuration.CellSizeWeights = {3, 1, 1, 1, 1}; }

  Velorn::InputParameter configuration;
  Velorn::AdjustmentSettings settings;
  double interval = 86400.0;  ///< longest section [s]
  std::vector<int> locked;    ///< ids of strips whose trajectory is held
  std::vector<std::string> held;
  bool isRelative = false;
};

/// Puts the choices where the library reads them.
/// @param strips  number of strips
/// @throws Error for a locked strip that is not there
void apply(Model& model, std::size_t strips);

}  // namespace Velorn::Flights
