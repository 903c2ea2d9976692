// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Rasterizing.h"

#include <chrono>
#include <memory>
#include <numeric>

#include <fmt/format.h>

#include "flight/chain/StepSettings.h"
#include "flight/records/FolderLock.h"
#include "flight/surfaces/Rasterize.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

/// Does the work of one file, unless it is done.
template <typename Work>
RasterReport once(const RunContext& run, const fs::path& file, const std::vector<fs::path>& outputs,
                  const Work& work) {
  const StepRecord record = run.folder.rasterRecordOf(file);
  StepKey key = rasterKey(run.settings);
  key.addFiles("input", {file});
  const auto done = run.settings.force ? std::nullopt : record.template valid<RasterCounts>(key);
  if (done) return {file.filename().string(), true, *done};
  record.begin();
  run.requireInputs();
  const RasterCounts counts = work();
  run.requireInputs();
  record.finish(key, outputs, counts);
  return {file.filename().string(), false, counts};
}

/// Variants that rasterize alike do so one after the other.
std::unique_ptr<FolderLock> lockOfShared(const RunContext& run) {
  if (run.settings.variant.empty()) return nullptr;
  return std::make_unique<FolderLock>(run.folder.surfaces(), run.watcher.get());
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

StepKey rasterKey(const FlightSettings& settings) {
  StepKey key("rasterize");
  addSettings(settings, Step::Rasterize, key);
  return key;
}

RasterizingReport rasterizeAll(RunContext& run) {
  const auto begin = std::chrono::steady_clock::now();
  const auto lock = lockOfShared(run);
  RasterizingReport report;
  for (const auto& strip : run.strips) {
    const auto& files = run.surfaces.files(strip.id);
    report.strips.push_back(once(run, strip.file, {files.planar, files.raster}, [&] {
      run.surfaces.forget(strip.id);
      return rasterizeStrip(files, run.configuration(), run.settings.raster, *run.watcher);
    }));
    run.tell(lineOf(report.strips.back()));
  }
  const auto& raster = run.surfaces.groundTruth();
  report.groundTruth = once(run, run.groundTruth, {raster}, [&] {
    return rasterizeGroundTruth(run.groundTruth, raster, run.configuration());
  });
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  report.seconds = elapsed.count();
  return report;
}

void requireSurfaces(const RunContext& run) {
  run.surfaces.requireFiles();
  constexpr const char* advice = "rasterize again";
  for (const auto& strip : run.strips) {
    const auto& files = run.surfaces.files(strip.id);
    run.folder.rasterRecordOf(strip.file).requireOutputs({files.planar, files.raster}, advice);
  }
  run.folder.rasterRecordOf(run.groundTruth).requireOutputs({run.surfaces.groundTruth()}, advice);
}

}  // namespace Velorn::Flights
