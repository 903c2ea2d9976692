// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/RunContext.h"

#include <algorithm>

#include "flight/chain/Inputs.h"
#include "flight/chain/Rasterizing.h"
#include "flight/chain/RunScale.h"
#include "flight/matching/SolverMemory.h"
#include "flight/strips/OrFail.h"
#include "platform/plome/AvailableMemory.h"
#include <velorn/flight/Containers.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

FlightSettings placed(FlightSettings settings) {
  settings.configuration().RootPath = rootOf(settings);
  return settings;
}

void makeFolderOfSurfaces(const FlightSettings& settings, RunFolder& folder) {
  if (!settings.variant.empty()) {
    folder.shareSurfaces(settings.configuration().RootPath.parent_path() / "surfaces" /
                         rasterKey(settings).digest());
  }
  folder.makeSurfaces();
}

/// The list of files wants a ground truth.
fs::path emptyGroundTruth(const RunFolder& folder) {
  auto file = folder.emptyGroundTruth();
  if (!fs::exists(file)) saveGroundTruth(file, {});
  return file;
}

std::vector<fs::path> inputsOf(const Velorn::FileContainer& files) {
  auto inputs = files.getStripFilesAndGroundTruth();
  const auto trajectories = files.getTrajectories();
  inputs.insert(inputs.end(), trajectories.begin(), trajectories.end());
  return inputs;
}

SurfaceStore storeOf(const RunContext& run) {
  std::vector<SurfaceFiles> files;
  for (const auto& strip : run.files.getStripFiles()) {
    files.push_back({strip, run.folder.planarPointsOf(strip), run.folder.rasterOf(strip)});
  }
  return {files, run.folder.rasterOf(run.groundTruth), run.configuration(), run.memory};
}

/// Half of what is free, and never what the solver is going to take.
std::size_t memoryOf(const FlightSettings& settings) {
  constexpr double gigabyte = 1e9;
  if (settings.memory > 0.0) return static_cast<std::size_t>(settings.memory * gigabyte);
  const auto free = Plome::availableMemory().value_or(0);
  const auto solver = bytesOfSolver(solverSettingsOf(settings.model).evaluation) *
                      maxCorrespondencesOf(settings.match, settings.strips.size());
  return std::min(free / 2, free - std::min<std::size_t>(free, solver));
}

}  // namespace

fs::path rootOf(const FlightSettings& settings) {
  const auto& root = settings.configuration().RootPath;
  return settings.variant.empty() ? root : root / settings.variant;
}

RunContext::RunContext(FlightSettings itsSettings, Watch watch)
    : settings(placed(std::move(itsSettings))),
      watcher(std::make_shared<Watcher>(std::move(watch))),
      folder(settings.configuration().RootPath, settings.configuration()),
      trajectory({settings.trajectories.begin(), settings.trajectories.end()}),
      memory(memoryOf(settings)),
      surfaces({}, {}, {}, 0) {
  folder.make();
  groundTruth = settings.groundTruth;
  if (groundTruth.empty()) groundTruth = emptyGroundTruth(folder);
  orFail(files.add(configuration().StripFiles, groundTruth.string(), configuration().Trajectories));
  inputs = FilesAtRest(inputsOf(files));
  requireFinishedImports(inputsOf(files));
  orFail(trajectory.importTrajectory());
  for (const auto& strip : files.getStripFiles()) {
    strips.push_back(factsOf(strip, static_cast<std::uint32_t>(strips.size())));
  }
  requireDifferentStrips(strips);
  scale = followPoints(settings.strips, folder, settings);
  if (scale) tell(textOf(*scale));
  makeFolderOfSurfaces(settings, folder);
  checkTogether(strips, trajectory, settings);
  surfaces = storeOf(*this);
}

std::vector<fs::path> RunContext::surfaceFiles() const {
  std::vector<fs::path> all;
  for (std::size_t k = 0; k < surfaces.size(); ++k) {
    all.push_back(surfaces.files(k).planar);
    all.push_back(surfaces.files(k).raster);
  }
  all.push_back(surfaces.groundTruth());
  return all;
}

}  // namespace Velorn::Flights
