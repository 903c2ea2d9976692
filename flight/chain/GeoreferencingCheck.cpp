// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What is refused before any strip is touched.
#include <map>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "flight/chain/StripsGeoreferencing.h"
#include "flight/formats/Sbet.h"
#include "flight/strips/OutputPlaces.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

void checkSelection(const GeoreferencingJob& job) {
  for (const int place : job.selected) {
    if (place >= 0 && static_cast<std::size_t>(place) < job.strips.size()) continue;
    throw Error(
        fmt::format("--select {}: there are {} strips, counted from 0", place, job.strips.size()),
        Error::BadSettings);
  }
}

void checkAdjustmentFiles(const GeoreferencingJob& job) {
  const bool all = !job.sections.empty() && !job.parameters.empty() && !job.stripIds.empty();
  const bool none = job.sections.empty() && job.parameters.empty() && job.stripIds.empty();
  if (all || none) return;
  throw Error("--sections, --parameters and --strip-ids belong together: give all three or none",
              Error::BadSettings);
}

/// All files that are read.
std::vector<fs::path> inputsOf(const GeoreferencingJob& job) {
  std::vector<fs::path> inputs = job.strips;
  inputs.insert(inputs.end(), job.trajectories.begin(), job.trajectories.end());
  for (const auto& file : {job.sections, job.parameters, job.stripIds}) {
    if (!file.empty()) inputs.push_back(file);
  }
  return inputs;
}

void checkInputs(const GeoreferencingJob& job) {
  std::string faults;
  for (const auto& file : inputsOf(job)) {
    std::error_code error;
    const auto status = fs::status(file, error);
    if (fs::is_regular_file(status)) continue;
    if (!faults.empty()) faults += '\n';
    faults += file.string() + (fs::exists(status) ? ": is not a file" : ": no such file");
  }
  if (!faults.empty()) throw Error(faults);
  for (const auto& file : job.trajectories) {
    if (!looksLikeSbet(file)) continue;
    throw Error(file.string() +
                ": is an SBET file by its name; a trajectory container (.kx) is "
                "needed");
  }
}

/// A strip is known by its name: in the files of an adjustment, and in those that are written.
void checkNames(const GeoreferencingJob& job) {
  std::map<std::string, fs::path> strips;
  for (const auto& strip : job.strips) {
    const auto [entry, isNew] = strips.emplace(strip.stem().string(), strip);
    if (isNew) continue;
    throw Error(
        fmt::format("{} and {}: two strips of one name; rename one, or georeference them "
                    "in two calls",
                    entry->second.string(), strip.string()));
  }
}

/// One name for all names of a file.
fs::path oneNameOf(const fs::path& file) {
  std::error_code error;
  const auto name = fs::weakly_canonical(file, error);
  return error ? file : name;
}

void checkOutputs(const GeoreferencingJob& job) {
  std::map<fs::path, fs::path> inputs;
  for (const auto& file : inputsOf(job)) inputs.emplace(oneNameOf(file), file);
  std::string existing;
  for (const std::size_t place : placesOf(job)) {
    const auto output = outputOf(job, place);
    if (const auto input = inputs.find(oneNameOf(output)); input != inputs.end()) {
      throw Error(fmt::format("{}: the output of {} would replace the input {}", output.string(),
                              job.strips[place].string(), input->second.string()));
    }
    std::error_code error;
    if (!job.overwrite && fs::exists(fs::symlink_status(output, error))) {
      existing +=
          (existing.empty() ? "" : "\n") + output.string() + ": exists; --overwrite replaces it";
    }
  }
  if (!existing.empty()) throw Error(existing);
}

}  // namespace

void checkJob(const GeoreferencingJob& job) {
  checkSelection(job);
  checkAdjustmentFiles(job);
  checkInputs(job);
  checkNames(job);
  if (job.outputFolder.empty()) return;
  checkOutputs(job);
  makeFolder(job.outputFolder);
}

}  // namespace Velorn::Flights
