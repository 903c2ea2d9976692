// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/StripsGeoreferencing.h"

#include <algorithm>
#include <chrono>

#include <fmt/format.h>

#include "flight/strips/AdjustedName.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"
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

Trajectory importedTrajectory(const GeoreferencingInput& input) {
  Trajectory trajectory(input.trajectories);
  orFail(trajectory.importTrajectory());
  return trajectory;
}

/// The result of an adjustment, or the mounting alone.
/// @param unknown  receives the strips that the adjustment did not know
SolverParameters parametersOf(const GeoreferencingInput& input, const Trajectory& trajectory,
                              std::vector<std::filesystem::path>& unknown) {
  SolverParameters parameters(input.strips, Velorn::InputParameter());
  orFail(input.model.sections.empty()
             ? parameters.setEmptySections(trajectory.getLeverarm(), trajectory.getMisalignment())
             : parameters.restore(input.model.sections, input.model.parameters,
                                  input.model.stripIds, &unknown));
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

std::vector<std::size_t> placesOf(const GeoreferencingInput& input) {
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < input.strips.size(); ++place) {
    if (input.selected.empty() || input.selected.contains(static_cast<int>(place))) {
      places.push_back(place);
    }
  }
  return places;
}

std::filesystem::path outputOf(const GeoreferencingInput& input, std::size_t place) {
  const auto& strip = input.strips.at(place);
  if (input.outputFolder.empty()) return strip;
  return input.outputFolder / adjustedNameOf(strip);
}

GeoreferencingReport georeference(const GeoreferencingInput& input, const Watch& watch) {
  check(input);
  return georeferencedBy(input, importedTrajectory(input), watch);
}

GeoreferencingReport georeferencedBy(const GeoreferencingInput& input, const Trajectory& trajectory,
                                     const Watch& watch) {
  const auto begin = std::chrono::steady_clock::now();
  Watcher watcher(watch);
  std::vector<std::filesystem::path> unknown;
  const SolverParameters parameters = parametersOf(input, trajectory, unknown);
  checkTimes(input, trajectory, parameters, unknown);
  if (!input.outputFolder.empty()) makeFolder(input.outputFolder);
  const auto places = placesOf(input);
  GeoreferencingReport report;
  report.folder = input.outputFolder;
  std::size_t faults = 0, notSaved = 0;
  std::string first;  // a host may show no messages
  for (const std::size_t place : places) {
    const std::string strip = input.strips[place].string();
    if (std::ranges::find(unknown, input.strips[place]) != unknown.end()) {
      report.unknown.push_back(input.strips[place].filename().string());
    }
    watcher.report("georeferencing", report.strips, places.size());
    report.points += pointsOf(strip);
    const std::string message = withMemoryFor(strip, [&] {
      return Velorn::scanner2world(parameters, trajectory, strip, static_cast<unsigned>(place),
                                   input.outputFolder.string(), input.inverse,
                                   input.compress ? 1 : 0, input.reportEarlyTimes);
    });
    ++report.strips;
    if (message.empty()) continue;
    const std::string fault = strip + ": " + withoutLineFeed(message);
    watcher.tell(fault);
    if (first.empty()) first = fault;
    ++faults;
    if (message.starts_with(beginningWhenNotSaved)) ++notSaved;
  }
  if (faults > 0) {
    const auto where =
        input.outputFolder.empty() ? "in place" : "to " + input.outputFolder.string();
    throw Error(
        fmt::format("{} of {} strips with a fault; {} without one written {}; the first fault: {}",
                    faults, report.strips, report.strips - faults, where, first),
        notSaved > 0 ? Error::NoSpace : Error::BadInput);
  }
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  report.seconds = elapsed.count();
  return report;
}

}  // namespace Velorn::Flights
