// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <system_error>

#include <fmt/format.h>

#include "flight/exchange/AdjustedModel.h"
#include "flight/exchange/CorrectedTrajectory.h"
#include "flight/exchange/LasFromStrips.h"
#include "flight/exchange/MountingFile.h"
#include "flight/formats/TrajectoryExport.h"
#include "flight/records/FinishedRun.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"
#include "flight/strips/Watcher.h"
#include "platform/plome/ReplacedFile.h"
#include <velorn/flight/Export.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

Wishes wishesOf(const ExportSettings& options) {
  if (options.wishes) return *options.wishes;
  return {true, options.model.has_value(), options.model.has_value()};
}

void checkInputs(const ExportSettings& options, const Wishes& wishes) {
  const auto need = [](bool isGiven, const char* what) {
    if (!isGiven) throw Error(what, Error::BadSettings);
  };
  need(!options.strips.empty() || !(wishes.strips || wishes.trajectory),
       "no strips were named: containers of adjusted points, or --root");
  need(options.model || !(wishes.mounting || wishes.trajectory),
       "mounting and trajectory need the files of an adjustment: --root, or --sections, "
       "--parameters and --strip-ids");
  need(!options.trajectories.empty() || !wishes.trajectory,
       "which trajectory did the adjustment use? --trajectory names its containers; without it, "
       "--only strips,mounting");
}

Velorn::Trajectory imported(const std::vector<fs::path>& files) {
  Velorn::Trajectory trajectory(files);
  orFail(trajectory.importTrajectory());
  return trajectory;
}

/// One export on its way into a folder.
class FlightExport {
 public:
  FlightExport(const ExportSettings& options, Watcher& watcher)
      : options_(options),
        wishes_(wishesOf(options)),
        progress_(watcher),
        tell_(watcher.teller()) {}

  ExportReport run() {
    checkInputs(options_, wishes_);
    look();
    refuseOutputs();
    makeFolder(options_.output);
    if (wishes_.mounting) writeMounting();
    if (wishes_.trajectory) writeTrajectory();
    for (std::size_t k = 0; k < strips_.size(); ++k) {
      progress_.report("exporting", k, strips_.size());
      writeLas(strips_[k]);
      wrote(strips_[k].target, fmt::format("{} points", strips_[k].points));
    }
    return report_;
  }

 private:
  void look() {
    if (wishes_.strips) {
      strips_ = lasStripsOf(options_.strips, options_.sourceFolder, options_.output);
    }
    if (wishes_.mounting || wishes_.trajectory) model_ = restored(*options_.model);
    if (wishes_.trajectory) correct();
  }

  void correct() {
    std::vector<fs::path> unknown;
    const auto strips = measuredStrips(options_.strips, model_, unknown);
    for (const auto& container : unknown) {
      tell_(container.string() +
            ": not in the adjustment; the trajectory stays as it is while it was measured");
    }
    if (strips.size() < model_.strips.size()) {
      tell_(
          fmt::format("{} of {} strips of the adjustment are not among those named; the "
                      "trajectory stays as it is while they were measured",
                      model_.strips.size() - strips.size(), model_.strips.size()));
    }
    const auto trajectory = imported(options_.trajectories);
    trajectory_ = correctedTrajectory(trajectory, model_.parameters, strips);
    epsg_ = trajectory.getEpsgSpatial();
    if (trajectory_.contested == 0 || trajectory_.corrected == 0) return;
    tell_(
        fmt::format("trajectory: {} records belong to two strips, each with corrections of its "
                    "own; those of the one named first were taken",
                    trajectory_.contested));
  }

  fs::path in(const char* name) const { return options_.output / name; }

  void refuseOutputs() const {
    for (const auto& strip : strips_) refuseExisting(strip.target, options_.overwrite);
    const auto refuse = [&](const char* name) { refuseExisting(in(name), options_.overwrite); };
    if (wishes_.mounting) {
      refuse("mounting.txt");
      refuse("mounting.json");
    }
    if (wishes_.trajectory) {
      refuse("trajectory.sbet");
      refuse("trajectory.txt");
    }
  }

  void writeMounting() {
    const auto write = [&](const char* name, const std::string& text) {
      orFail(Plome::replaceFile(in(name), text), Error::NoSpace);
      wrote(in(name), "lever arm, misalignment, offsets and scales");
    };
    write("mounting.txt", mountingText(model_.parameters));
    write("mounting.json", mountingJson(model_.parameters));
  }

  void writeTrajectory() {
    const auto content =
        fmt::format("{} of {} records corrected, from week {} on", trajectory_.corrected,
                    trajectory_.records.size(), trajectory_.week);
    writeSbet(in("trajectory.sbet"), trajectory_.records);
    wrote(in("trajectory.sbet"), content);
    writeTextTrajectory(in("trajectory.txt"), trajectory_.records, epsg_);
    wrote(in("trajectory.txt"), content);
  }

  void wrote(const fs::path& file, const std::string& content) {
    report_.files.push_back({file, content});
  }

  const ExportSettings& options_;
  Wishes wishes_;
  Watcher& progress_;
  const Tell tell_;
  ExportReport report_;
  std::vector<LasStrip> strips_;
  AdjustedModel model_;
  CorrectedTrajectory trajectory_;
  unsigned epsg_ = 0;
};

/// Fills in what is not given. Mounting and trajectory need no adjusted strips: those that were
/// adjusted were measured at the same times.
void completeFrom(const FinishedRun& run, ExportSettings& settings) {
  const bool needsStrips = !settings.wishes || settings.wishes->strips;
  const bool needsTrajectory = !settings.wishes || settings.wishes->trajectory;
  if (settings.strips.empty() && needsStrips) settings.strips = run.adjustedStrips();
  if (settings.strips.empty() && needsTrajectory) settings.strips = run.strips();
  if (!settings.model) settings.model = run.model();
  if (settings.trajectories.empty() && needsTrajectory) settings.trajectories = run.trajectories();
}

}  // namespace

ExportReport exportFlight(const ExportSettings& settings, const Watch& watch) {
  Watcher watcher(watch);
  return withMemoryFor(settings.output.string(), [&] {
    ExportSettings completed = settings;
    if (!settings.root.empty()) completeFrom(FinishedRun(settings.root), completed);
    return FlightExport(completed, watcher).run();
  });
}

}  // namespace Velorn::Flights
