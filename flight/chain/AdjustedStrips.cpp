// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/AdjustedStrips.h"

#include <fmt/format.h>

#include "flight/chain/StripsGeoreferencing.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {

namespace {

GeoreferencingJob jobOf(const RunContext& run, const ModelFiles& model) {
  GeoreferencingJob job;
  job.strips = run.files.getStripFiles();
  job.trajectories = run.files.getTrajectories();
  job.outputFolder = run.inRoot(adjustedFolder);
  job.compress = run.project.compress;
  job.overwrite = true;
  job.sections = model.sections;
  job.parameters = model.parameters;
  job.stripIds = model.stripIds;
  return job;
}

std::vector<std::filesystem::path> outputsOf(const GeoreferencingJob& job) {
  std::vector<std::filesystem::path> outputs;
  for (const std::size_t place : placesOf(job)) outputs.push_back(outputOf(job, place));
  return outputs;
}

}  // namespace

Json georeferenceAll(const RunContext& run, const ModelFiles& model, const Json& modelKey) {
  const auto job = jobOf(run, model);
  const StepRecord record = run.recordOf("georeference");
  Json key = keyOf("georeference");
  key["model"] = digestOf(modelKey);
  key["strips"] = stampsOf(job.strips);
  key["compress"] = job.compress;
  auto report = run.project.force ? std::nullopt : record.valid(key);
  const bool isDone = report.has_value();
  if (!isDone) {
    record.begin();
    checkJob(job);
    const JobResult result = runJob(job, *run.output.progress, run.output.tell);
    if (result.faults > 0) {
      throw Error(fmt::format("{} of {} strips could not be georeferenced, they are named above",
                              result.faults, result.strips),
                  result.notSaved > 0 ? Error::NoSpace : Error::BadInput);
    }
    report = Json{{"folder", job.outputFolder.string()},
                  {"strips", result.strips},
                  {"points", result.points},
                  {"seconds", result.seconds}};
    record.finish(key, outputsOf(job), *report);
  }
  run.output.tell(fmt::format("georeference: {} strips with {} points in {}{}",
                              (*report)["strips"].get<std::size_t>(),
                              (*report)["points"].get<std::size_t>(), job.outputFolder.string(),
                              isDone ? "; unchanged, skipped" : ""));
  (*report)["skipped"] = isDone;
  return *report;
}

}  // namespace Velorn::Flights
