// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What is refused before any strip is touched.
#include <map>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "flight/chain/Inputs.h"
#include "flight/chain/StripsGeoreferencing.h"
#include "flight/formats/Sbet.h"
#include "flight/strips/OutputPlaces.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

void checkSelection(const GeoreferencingInput& input) {
  for (const int place : input.selected) {
    if (place >= 0 && static_cast<std::size_t>(place) < input.strips.size()) continue;
    throw Error(
        fmt::format("--select {}: there are {} strips, counted from 0", place, input.strips.size()),
        Error::BadSettings);
  }
}

void checkAdjustmentFiles(const GeoreferencingInput& input) {
  const auto& [sections, parameters, stripIds] = input.model;
  const bool all = !sections.empty() && !parameters.empty() && !stripIds.empty();
  const bool none = sections.empty() && parameters.empty() && stripIds.empty();
  if (all || none) return;
  throw Error("--sections, --parameters and --strip-ids belong together: give all three or none",
              Error::BadSettings);
}

/// All files that are read.
std::vector<fs::path> inputsOf(const GeoreferencingInput& input) {
  std::vector<fs::path> inputs = input.strips;
  inputs.insert(inputs.end(), input.trajectories.begin(), input.trajectories.end());
  for (const auto& file : {input.model.sections, input.model.parameters, input.model.stripIds}) {
    if (!file.empty()) inputs.push_back(file);
  }
  return inputs;
}

void checkInputs(const GeoreferencingInput& input) {
  std::string faults;
  for (const auto& file : inputsOf(input)) {
    std::error_code error;
    const auto status = fs::status(file, error);
    if (fs::is_regular_file(status)) continue;
    if (!faults.empty()) faults += '\n';
    faults += file.string() + (fs::exists(status) ? ": is not a file" : ": no such file");
  }
  if (!faults.empty()) throw Error(faults);
  for (const auto& file : input.trajectories) {
    if (!looksLikeSbet(file)) continue;
    throw Error(file.string() +
                ": is an SBET file by its name; a trajectory container (.kx) is "
                "needed");
  }
}

/// A strip is known by its name: in the files of an adjustment, and in those that are written.
void checkNames(const GeoreferencingInput& input) {
  std::map<std::string, fs::path> strips;
  for (const auto& strip : input.strips) {
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

void checkOutputs(const GeoreferencingInput& input) {
  std::map<fs::path, fs::path> inputs;
  for (const auto& file : inputsOf(input)) inputs.emplace(oneNameOf(file), file);
  std::string existing;
  for (const std::size_t place : placesOf(input)) {
    const auto output = outputOf(input, place);
    if (const auto same = inputs.find(oneNameOf(output)); same != inputs.end()) {
      throw Error(fmt::format("{}: the output of {} would replace the input {}", output.string(),
                              input.strips[place].string(), same->second.string()));
    }
    std::error_code error;
    if (!input.overwrite && fs::exists(fs::symlink_status(output, error))) {
      existing +=
          (existing.empty() ? "" : "\n") + output.string() + ": exists; --overwrite replaces it";
    }
  }
  if (!existing.empty()) throw Error(existing);
}

}  // namespace

void check(const GeoreferencingInput& input) {
  checkSelection(input);
  checkAdjustmentFiles(input);
  checkInputs(input);
  checkNames(input);
  if (!input.outputFolder.empty()) checkOutputs(input);
}

}  // namespace Velorn::Flights
