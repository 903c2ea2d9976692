// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/RunContext.h"

#include <system_error>

#include <fmt/format.h>

#include "flight/strips/Containers.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

constexpr const char* recordsFolder = "steps";

/// Counts on with what the reports of steps hold, so that one of an older form is made anew.
constexpr int reportForm = 2;

void makeFolders(const RunContext& run) {
  const auto& names = run.configuration();
  for (const auto& name :
       {names.getPrameterPath(), names.getStatusPath() / recordsFolder, names.getRasterPath(),
        names.getCorrespondencePath(), names.getStatisticPath()}) {
    makeFolder(run.inRoot(name));
  }
}

/// The list of files wants a ground truth.
fs::path emptyGroundTruth(const RunContext& run) {
  auto file = run.inRoot(run.configuration().getPrameterPath()) / "no_ground_truth.kx";
  if (!fs::exists(file)) saveGroundTruth(file, {});
  return file;
}

}  // namespace

RunContext::RunContext(const Project& theProject, RunOutput theOutput)
    : project(theProject), output(std::move(theOutput)), trajectory(theProject.trajectoryFiles()) {
  makeFolders(*this);
  groundTruth = project.groundTruth;
  if (groundTruth.empty()) groundTruth = emptyGroundTruth(*this);
  orFail(files.add(configuration().StripFiles, groundTruth.string(), configuration().Trajectories));
  orFail(trajectory.importTrajectory());
  for (const auto& strip : files.getStripFiles()) strips.push_back(factsOf(strip));
  checkTogether(strips, trajectory, project);
}

std::vector<fs::path> RunContext::rasters() const {
  return files.getStripFilesAndGroundTruthRaster(inRoot(configuration().getRasterPath()));
}

StepRecord RunContext::recordOf(const std::string& step) const {
  return {inRoot(configuration().getStatusPath()) / recordsFolder, step};
}

Json keyOf(const std::string& step) {
  return {{"step", step}, {"program", VELORN_VERSION}, {"form", reportForm}};
}

std::string digestOf(const Json& key) {
  std::uint64_t hash = 14695981039346656037ULL;
  // File names are any bytes.
  for (const char letter : key.dump(-1, ' ', false, Json::error_handler_t::replace)) {
    hash = (hash ^ static_cast<unsigned char>(letter)) * 1099511628211ULL;
  }
  return fmt::format("{:016x}", hash);
}

}  // namespace Velorn::Flights
