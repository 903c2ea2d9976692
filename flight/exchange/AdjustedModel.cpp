// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/exchange/AdjustedModel.h"

#include <algorithm>
#include <filesystem>

#include "flight/records/StripIds.h"
#include "flight/strips/OrFail.h"
#include <velorn/InputParameter.h>

namespace Velorn::Flights {

AdjustedModel restored(const ModelFiles& files) {
  AdjustedModel model;
  std::vector<std::filesystem::path> paths;
  for (const auto& [id, name] : stripNamesIn(files.stripIds)) {
    model.strips.push_back(name);
    paths.emplace_back(name);
  }
  model.parameters = Velorn::SolverParameters(paths, Velorn::InputParameter());
  orFail(model.parameters.restore(files.sections, files.parameters, files.stripIds));
  return model;
}

PoseCorrection correctionAt(const Velorn::SolverParameters& parameters, unsigned strip,
                            const TimeSpan& span, double time) {
  const auto found = parameters.findSection(strip, std::clamp(time, span.first, span.last));
  if (!found) return {};
  const double dt = time - found->section.t;
  const unsigned section = found->section.sectionID;
  const auto cubic = [&](auto coefficient) {
    return coefficient(0) + dt * (coefficient(1) + dt * (coefficient(2) + dt * coefficient(3)));
  };
  const auto position = [&](unsigned j) {
    return cubic(
        [&](unsigned m) { return parameters.getTrajectoryPositionCorrection(section, 4 * j + m); });
  };
  const auto attitude = [&](unsigned j) {
    return cubic(
        [&](unsigned m) { return parameters.getTrajectoryAngleCorrection(section, 4 * j + m); });
  };
  return {{position(0), position(1), position(2)}, {attitude(0), attitude(1), attitude(2)}};
}

}  // namespace Velorn::Flights
