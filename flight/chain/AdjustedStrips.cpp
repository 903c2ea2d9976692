// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/AdjustedStrips.h"

#include <fmt/format.h>

#include "flight/chain/StepSettings.h"
#include "flight/chain/StripsGeoreferencing.h"

namespace Velorn::Flights {
namespace {

GeoreferencingInput inputOf(const RunContext& run, const ModelFiles& model) {
  GeoreferencingInput input;
  input.strips = run.files.getStripFiles();
  input.trajectories = run.files.getTrajectories();
  input.outputFolder = run.folder.adjusted();
  input.compress = run.settings.compress;
  input.overwrite = true;
  input.model = model;
  return input;
}

std::vector<std::filesystem::path> outputsOf(const GeoreferencingInput& input) {
  std::vector<std::filesystem::path> outputs;
  for (const std::size_t place : placesOf(input)) outputs.push_back(outputOf(input, place));
  return outputs;
}

}  // namespace

GeoreferencingReport georeferenceAll(const RunContext& run, const RoundModel& model,
                                     const Watch& watch) {
  const auto input = inputOf(run, model.files);
  const StepRecord record = run.folder.record("georeference");
  StepKey key("georeference");
  key.add("model", model.digest);
  key.addFiles("strip", input.strips);
  addSettings(run.settings, Step::Georeference, key);
  auto report = run.settings.force ? std::nullopt : record.valid<GeoreferencingReport>(key);
  const bool isDone = report.has_value();
  if (!isDone) {
    record.begin();
    run.requireInputs();
    check(input);
    report = georeferencedBy(input, run.trajectory, watch);
    run.requireInputs();
    record.finish(key, outputsOf(input), *report);
  }
  report->isSkipped = isDone;
  run.tell(fmt::format("georeference: {} strips with {} points in {}{}", report->strips,
                       report->points, input.outputFolder.string(),
                       isDone ? "; unchanged, skipped" : ""));
  return *report;
}

}  // namespace Velorn::Flights
