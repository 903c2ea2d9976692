// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Rasterizing.h"

#include <chrono>

#include <fmt/format.h>

#include "flight/records/ReportJson.h"

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

Json optionsOf(const Project& project) {
  const auto& configuration = project.configuration();
  const auto& raster = project.raster;
  return {{"cells", configuration.CellSize},
          {"amplitude", configuration.Amplitude},
          {"selection", configuration.SelectionStr},
          {"neighbours", raster.neighbours},
          {"neighbour_radius", raster.neighbourRadius},
          {"max_roughness", raster.maxRoughness},
          {"slope_limit", raster.slopeLimit}};
}

/// Does the work of one file, unless it is done.
/// @param inputs  files that the work does not change
template <typename Work>
Json once(const RunContext& run, const fs::path& file, const std::vector<fs::path>& inputs,
          const std::vector<fs::path>& outputs, const Work& work) {
  const std::string name = file.stem().string();
  const StepRecord record = run.recordOf("rasterize_" + name);
  Json key = keyOf("rasterize " + fs::absolute(file).lexically_normal().string());
  key["options"] = optionsOf(run.project);
  key["inputs"] = stampsOf(inputs);
  auto report = run.project.force ? std::nullopt : record.valid(key);
  const bool isDone = report.has_value();
  if (!isDone) {
    record.begin();
    report = work();
    record.finish(key, outputs, *report);
  }
  Json entry{{"name", file.filename().string()}, {"skipped", isDone}};
  entry.update(*report);
  return entry;
}

std::string lineOf(const Json& entry) {
  std::size_t surface = 0;
  std::size_t chosen = 0;
  for (const auto& count : entry["surface"]) surface += count.get<std::size_t>();
  for (const auto& count : entry["representatives"]) chosen += count.get<std::size_t>();
  return fmt::format("rasterize {}: {} points, {} on planar surfaces, {} in the raster{}",
                     entry["name"].get<std::string>(), entry["points"].get<std::size_t>(), surface,
                     chosen, entry["skipped"] ? "; unchanged, skipped" : "");
}

}  // namespace

Json rasterizeAll(const RunContext& run) {
  const auto begin = std::chrono::steady_clock::now();
  Json report{{"strips", Json::array()}};
  const auto& project = run.project;
  for (const auto& strip : run.strips) {
    const auto raster = run.rasterOf(strip.file);
    report["strips"].push_back(once(run, strip.file, {}, {strip.file, raster}, [&] {
      return reportOf(rasterizeStrip(strip.file, raster, run.configuration(), project.raster,
                                     *run.output.progress));
    }));
    run.output.tell(lineOf(report["strips"].back()));
  }
  const auto raster = run.rasterOf(run.groundTruth);
  report["ground_truth"] = once(run, run.groundTruth, {run.groundTruth}, {raster}, [&] {
    return reportOf(rasterizeGroundTruth(run.groundTruth, raster, run.configuration()));
  });
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  report["seconds"] = elapsed.count();
  return report;
}

}  // namespace Velorn::Flights
