// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Chain.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

#include <fmt/format.h>

#include "flight/chain/AdjustedStrips.h"
#include "flight/chain/PeakMemory.h"
#include "flight/chain/Rasterizing.h"
#include "flight/chain/Rounds.h"
#include "flight/records/ReportJson.h"
#include "flight/report/SummaryText.h"
#include "flight/strips/Median.h"
#include "platform/plome/ReplacedFile.h"
#include <velorn/TextHelpers.h>
#include <velorn/flight/Error.h>

namespace Velorn::Flights {

namespace {

Json stripsOf(const RunContext& run) {
  Json strips = Json::array();
  for (std::size_t id = 0; id < run.strips.size(); ++id) {
    const auto& strip = run.strips[id];
    strips.push_back({{"id", id},
                      {"file", strip.file.string()},
                      {"points", strip.points},
                      {"week", strip.week},
                      {"first_time", strip.first},
                      {"last_time", strip.last},
                      {"farthest_forward", strip.farthestForward}});
  }
  return strips;
}

void write(const std::filesystem::path& file, const std::string& text) {
  if (const auto fault = Plome::replaceFile(file, text); !fault.empty()) {
    throw Error(fault, Error::NoSpace);
  }
}

void writeSummary(const RunContext& run, const Json& summary) {
  write(run.inRoot("summary.json"),
        summary.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
  write(run.inRoot("summary.txt"), summaryText(summary));
}

/// Where the adjusted model is, from the root folder, so that the folder can go elsewhere.
Json filesOf(const RunContext& run, const ModelFiles& model) {
  const auto inRoot = [&](const std::filesystem::path& file) {
    return file.lexically_relative(run.configuration().RootPath).string();
  };
  return {{"sections", inRoot(model.sections)},
          {"parameters", inRoot(model.parameters)},
          {"strip_ids", inRoot(model.stripIds)}};
}

/// Of the strips that are not locked, the median [s]; NaN when all are.
double sectionLengthOf(const RunContext& run) {
  const auto& locked = run.configuration().LockedStrips;
  const double longest = run.project.model.interval;
  std::vector<float> lengths;
  for (std::size_t id = 0; id < run.strips.size(); ++id) {
    if (locked.contains(static_cast<int>(id))) continue;
    const double length = run.strips[id].last - run.strips[id].first;
    lengths.push_back(static_cast<float>(length / std::max(1.0, std::ceil(length / longest))));
  }
  return static_cast<double>(upperMedianOf(std::move(lengths)));
}

/// What the last round found stands by itself, so that nobody has to look for it.
void addLastRound(const RunContext& run, const RoundsResult& rounds, Json& summary) {
  summary["rounds"] = rounds.reports;
  if (rounds.reports.empty()) return;
  if (rounds.model) summary["files"] = filesOf(run, *rounds.model);
  Json& last = summary["rounds"].back();
  for (auto& round : summary["rounds"]) {
    if (round.contains("adjustment")) round["adjustment"].erase("files");
  }
  if (last.contains("adjustment")) summary["adjustment"] = last["adjustment"];
  if (last.contains("matching")) {
    summary["datum"] = datumOf(last["matching"], run.configuration(), run.project.model.isRelative,
                               sectionLengthOf(run));
  }
}

/// What the steps find is in the summary also when a later one fails.
void doSteps(const RunContext& context, Json& summary) {
  const Project& project = context.project;
  if (project.does("+rasterize")) summary["rasterize"] = rasterizeAll(context);
  RoundsResult rounds;
  if (project.does("+correspondences") || project.does("+optimization")) {
    rounds = runRounds(context);
    addLastRound(context, rounds, summary);
  }
  if (project.does("+adjustment") && rounds.model) {
    summary["georeference"] = georeferenceAll(context, *rounds.model, rounds.key);
  } else if (std::filesystem::exists(context.inRoot(adjustedFolder))) {
    context.output.tell(fmt::format("{}: its strips are those of an earlier run",
                                    context.inRoot(adjustedFolder).string()));
  }
}

/// Leaves no summary of an earlier run beside the results of this one, and hides no fault of the
/// steps behind one of its own.
void writeSummaryOfFailure(const RunContext& context, Json& summary, const Error& failure) {
  summary["failure"] = failure.what();
  try {
    writeSummary(context, summary);
  } catch (const Error& second) {
    context.output.tell(second.what());
  }
}

}  // namespace

Json run(const Project& project, const RunOutput& output) {
  const auto begin = std::chrono::steady_clock::now();
  const RunContext context(project, output);
  Json summary{{"schema", "velorn summary"},
               {"version", 1},
               {"program", VELORN_VERSION},
               {"steps", project.configuration().Options.text()},
               {"root", project.configuration().RootPath.string()},
               {"strips", stripsOf(context)}};
  const auto measure = [&] {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    summary["seconds"] = elapsed.count();
    summary["peak_memory"] = peakMemory();
  };
  try {
    doSteps(context, summary);
  } catch (const Error& failure) {
    measure();
    writeSummaryOfFailure(context, summary, failure);
    throw;
  }
  measure();
  writeSummary(context, summary);
  return summary;
}

void orFailAsSolver(const Json& summary) {
  if (!summary.contains("adjustment")) return;
  const auto& solver = summary["adjustment"]["solver"];
  Velorn::SolverEnd end;
  end.termination = solver["termination"];
  end.message = solver["message"];
  requireConvergence(end, "raise iterations, or with many short sections raise interval");
}

}  // namespace Velorn::Flights
