// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Rasterizing.h"

#include <chrono>
#include <numeric>

#include <fmt/format.h>

#include "flight/chain/StepSettings.h"
#include "flight/surfaces/Rasterize.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

/// Does the work of one file, unless it is done.
/// @param inputs  files that the work does not change
template <typename Work>
RasterReport once(const RunContext& run, const fs::path& file, const std::vector<fs::path>& inputs,
                  const std::vector<fs::path>& outputs, const Work& work) {
  const StepRecord record = run.folder.record("rasterize_" + file.stem().string());
  StepKey key("rasterize " + fs::absolute(file).lexically_normal().string());
  addSettings(run.settings, Step::Rasterize, key);
  key.addFiles("input", inputs);
  const auto done = run.settings.force ? std::nullopt : record.template valid<RasterCounts>(key);
  if (done) return {file.filename().string(), true, *done};
  record.begin();
  const RasterCounts counts = work();
  record.finish(key, outputs, counts);
  return {file.filename().string(), false, counts};
}

std::size_t sumOf(const PerClass& counts) {
  return std::accumulate(counts.begin(), counts.end(), std::size_t{0});
}

std::string lineOf(const RasterReport& raster) {
  return fmt::format("rasterize {}: {} points, {} on planar surfaces, {} in the raster{}",
                     raster.name, raster.counts.points, sumOf(raster.counts.surface),
                     sumOf(raster.counts.representatives),
                     raster.isSkipped ? "; unchanged, skipped" : "");
}

}  // namespace

RasterizingReport rasterizeAll(const RunContext& run) {
  const auto begin = std::chrono::steady_clock::now();
  RasterizingReport report;
  for (const auto& strip : run.strips) {
    const auto raster = run.folder.rasterOf(strip.file);
    report.strips.push_back(once(run, strip.file, {}, {strip.file, raster}, [&] {
      return rasterizeStrip(strip.file, raster, run.configuration(), run.settings.raster,
                            *run.watcher);
    }));
    run.tell(lineOf(report.strips.back()));
  }
  const auto raster = run.folder.rasterOf(run.groundTruth);
  report.groundTruth = once(run, run.groundTruth, {run.groundTruth}, {raster}, [&] {
    return rasterizeGroundTruth(run.groundTruth, raster, run.configuration());
  });
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  report.seconds = elapsed.count();
  return report;
}

}  // namespace Velorn::Flights
