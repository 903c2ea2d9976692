// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/settings/ModelSettings.h"

#include <fmt/format.h>

#include <velorn/flight/Error.h>

namespace Velorn::Flights {

void apply(Model& model, std::size_t strips) {
  auto& configuration = model.configuration;
  configuration.DefaultInterval.assign(3, model.interval);
  for (const int strip : model.locked) {
    if (strip >= 0 && static_cast<std::size_t>(strip) < strips) continue;
    throw Error(fmt::format("--lock {}: there are {} strips, counted from 0", strip, strips),
                Error::BadSettings);
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

}  // namespace Velorn::Flights
