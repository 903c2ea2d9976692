// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/FinishedRun.h"

#include <system_error>

#include <fmt/format.h>

#include "flight/strips/AdjustedName.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

/// @param advice  what to do without the file
void requireFile(const fs::path& file, const std::string& advice) {
  std::error_code ignored;
  if (fs::is_regular_file(file, ignored)) return;
  throw Error(file.string() + ": no such file; " + advice, Error::MissingFile);
}

}  // namespace

FinishedRun::FinishedRun(const fs::path& root) : folder_(root), state_(RunState::in(root)) {
  const auto refused = [&](const std::string& why) {
    return Error(fmt::format("{}: {}", root.string(), why));
  };
  switch (state_.phase) {
    case RunState::Phase::running:
      throw refused("a run is going on there; what it leaves can be used when it has finished");
    case RunState::Phase::interrupted:
      throw refused("the last run there was interrupted; `velorn run` goes on where it stopped");
    case RunState::Phase::failed:
      throw refused(
          fmt::format("the last run there failed: {}; mend that and run again", state_.message));
    case RunState::Phase::finished:
      break;
  }
}

std::optional<ModelFiles> FinishedRun::modelIfAny() const {
  if (!state_.model) return {};
  const auto model = folder_.inRoot(*state_.model);
  for (const auto& file : {model.sections, model.parameters, model.stripIds}) {
    requireFile(file, "the run wrote it; run again");
  }
  return model;
}

ModelFiles FinishedRun::model() const {
  if (auto model = modelIfAny()) return *model;
  throw Error(
      fmt::format("{}: the last run there did \"{}\" and adjusted nothing; `velorn run` "
                  "does all steps, and skips those that are done",
                  folder_.root().string(), state_.steps));
}

std::vector<fs::path> FinishedRun::adjustedStrips() const {
  if (state_.isGeoreferenced) {
    std::vector<fs::path> strips;
    for (const auto& strip : state_.strips) {
      strips.push_back(folder_.adjusted() / adjustedNameOf(strip));
      requireFile(strips.back(), "the run wrote it; run again");
    }
    return strips;
  }
  throw Error(
      fmt::format("{}: holds no strips that the last run there has adjusted (it did "
                  "\"{}\"); `velorn run` does all steps, and skips those that are done",
                  folder_.adjusted().string(), state_.steps));
}

std::vector<fs::path> FinishedRun::strips() const {
  for (const auto& file : state_.strips) requireFile(file, "the run used it");
  return state_.strips;
}

std::vector<fs::path> FinishedRun::trajectories() const {
  for (const auto& file : state_.trajectories) {
    requireFile(file, "the run used it. --trajectory names where it lies now");
  }
  return state_.trajectories;
}

}  // namespace Velorn::Flights
