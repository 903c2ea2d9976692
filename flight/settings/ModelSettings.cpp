// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include <velorn/flight/Error.h>
#include <velorn/flight/SettingsTable.h>

namespace Velorn::Flights {

void complete(ModelSettings& model, std::size_t strips) {
  FlightSettings flight;
  flight.model = model;
  checkValues(flight);
  auto& configuration = model.configuration;
  constexpr double whole = 86400.0, quick = 10.0;
  const double chosen = model.prior.isUsed ? quick : whole;
  configuration.DefaultInterval.assign(3, model.interval > 0.0 ? model.interval : chosen);
  for (const int strip : model.locked) {
    if (strip >= 0 && static_cast<std::size_t>(strip) < strips) continue;
    throw Error(fmt::format("--lock {}: there are {} strips, counted from 0", strip, strips),
                Error::BadSettings);
  }
  configuration.LockedStrips = {model.locked.begin(), model.locked.end()};
}

Velorn::AdjustmentSettings solverSettingsOf(const ModelSettings& model) {
  const auto isFree = [&](std::string_view block) {
    return std::ranges::find(model.held, block) == model.held.end();
  };
  Velorn::AdjustmentSettings settings;
  settings.estimateOffsets = isFree("offsets");
  settings.estimateScales = isFree("scales");
  settings.estimateMisalignment = isFree("misalignment");
  settings.estimateLeverArm = isFree("lever-arm");
  settings.evaluation =
      model.isReference ? Velorn::Evaluation::Reference : Velorn::Evaluation::Condensed;
  if (model.isRelative) settings.fewestGroundTruth = 0;
  return settings;
}

}  // namespace Velorn::Flights
