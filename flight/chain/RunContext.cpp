// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/RunContext.h"

#include "flight/chain/Inputs.h"
#include "flight/strips/OrFail.h"
#include <velorn/flight/Containers.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

/// The list of files wants a ground truth.
fs::path emptyGroundTruth(const RunFolder& folder) {
  auto file = folder.emptyGroundTruth();
  if (!fs::exists(file)) saveGroundTruth(file, {});
  return file;
}

}  // namespace

RunContext::RunContext(FlightSettings itsSettings, Watch watch)
    : settings(std::move(itsSettings)),
      watcher(std::make_shared<Watcher>(std::move(watch))),
      folder(configuration().RootPath, configuration()),
      trajectory({settings.trajectories.begin(), settings.trajectories.end()}) {
  folder.make();
  groundTruth = settings.groundTruth;
  if (groundTruth.empty()) groundTruth = emptyGroundTruth(folder);
  orFail(files.add(configuration().StripFiles, groundTruth.string(), configuration().Trajectories));
  orFail(trajectory.importTrajectory());
  for (const auto& strip : files.getStripFiles()) {
    strips.push_back(factsOf(strip, static_cast<std::uint32_t>(strips.size())));
  }
  checkTogether(strips, trajectory, settings);
}

std::vector<fs::path> RunContext::rasters() const {
  return files.getStripFilesAndGroundTruthRaster(folder.rasters());
}

}  // namespace Velorn::Flights
