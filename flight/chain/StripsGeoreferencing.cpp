// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/StripsGeoreferencing.h"

#include <algorithm>
#include <chrono>

#include "flight/strips/AdjustedName.h"
#include "flight/strips/OrFail.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/Georeferencing.h>
#include <velorn/InputParameter.h>
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>

namespace Velorn::Flights {

namespace {

using Velorn::SolverParameters, Velorn::Trajectory;

/// Of the library's message about a strip that is right but cannot be written.
constexpr const char* beginningWhenNotSaved = "scanner2world::initialize, SaveParameters: ";

Trajectory importedTrajectory(const GeoreferencingJob& job) {
  Trajectory trajectory(job.trajectories);
  orFail(trajectory.importTrajectory());
  return trajectory;
}

/// The result of an adjustment, or the mounting alone.
/// @param unknown  receives the strips that the adjustment did not know
SolverParameters parametersOf(const GeoreferencingJob& job, const Trajectory& trajectory,
                              std::vector<std::filesystem::path>& unknown) {
  SolverParameters parameters(job.strips, Velorn::InputParameter());
  orFail(job.sections.empty()
             ? parameters.setEmptySections(trajectory.getLeverarm(), trajectory.getMisalignment())
             : parameters.restore(job.sections, job.parameters, job.stripIds, &unknown));
  return parameters;
}

/// Measurements of a strip by its structure alone; 0 when it cannot be opened.
std::size_t pointsOf(const std::filesystem::path& strip) {
  Strandel::Bundle bundle;
  if (!Strandel::MyStorage(0, 0, 0, 1).load(strip, bundle).empty()) return 0;
  std::size_t points = 0;
  for (const auto& grid : bundle.grids()) {
    const auto chart = grid->chart(Strandel::scannerChartName);
    const auto positions = chart ? chart->field("Positions") : nullptr;
    points += positions ? positions->size() : 0;
  }
  return points;
}

std::string withoutLineFeed(std::string text) {
  text.erase(text.find_last_not_of(" \n") + 1);
  return text;
}

}  // namespace

std::vector<std::size_t> placesOf(const GeoreferencingJob& job) {
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < job.strips.size(); ++place) {
    if (job.selected.empty() || job.selected.contains(static_cast<int>(place))) {
      places.push_back(place);
    }
  }
  return places;
}

std::filesystem::path outputOf(const GeoreferencingJob& job, std::size_t place) {
  const auto& strip = job.strips.at(place);
  if (job.outputFolder.empty()) return strip;
  return job.outputFolder / adjustedNameOf(strip);
}

JobResult runJob(const GeoreferencingJob& job, Kestrum::LoaderProgress& progress,
                 const std::function<void(const std::string&)>& tell) {
  const auto begin = std::chrono::steady_clock::now();
  const Trajectory trajectory = importedTrajectory(job);
  std::vector<std::filesystem::path> unknown;
  const SolverParameters parameters = parametersOf(job, trajectory, unknown);
  const auto places = placesOf(job);
  JobResult result;
  for (const std::size_t place : places) {
    const std::string strip = job.strips[place].string();
    if (std::ranges::find(unknown, job.strips[place]) != unknown.end()) {
      result.unknown.push_back(job.strips[place].filename().string());
    }
    progress.report("georeferencing", result.strips, places.size());
    result.points += pointsOf(strip);
    const std::string message = Velorn::scanner2world(
        parameters, trajectory, strip, static_cast<unsigned>(place), job.outputFolder.string(),
        job.inverse, job.compress ? 1 : 0, job.reportEarlyTimes);
    if (!message.empty()) {
      tell(strip + ": " + withoutLineFeed(message));
      ++result.faults;
      if (message.starts_with(beginningWhenNotSaved)) ++result.notSaved;
    }
    ++result.strips;
  }
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  result.seconds = elapsed.count();
  return result;
}

}  // namespace Velorn::Flights
