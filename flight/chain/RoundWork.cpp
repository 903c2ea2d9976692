// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/RoundWork.h"

#include <algorithm>
#include <system_error>

#include <fmt/format.h>

#include "flight/chain/Adjustment.h"
#include "flight/chain/RoundStrips.h"
#include "flight/matching/Match.h"
#include "flight/strips/OrFail.h"
#include <velorn/SolverParameters.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

void addMatchOptions(const FlightSettings& settings, const Round& round, StepKey& key) {
  key.add("search_radius", round.radius);
  key.add("scale", round.scale);
  key.add("coarse_rounds", settings.coarseRounds);
  key.add("max_angle", settings.configuration().ThresholdMaxAngle);
  key.add("max_correspondences", settings.match.maxCorrespondences);
  key.add("seed", settings.match.seed);
  key.add("onto_planes", settings.match.ontoPlanes);
  key.add("neighbours", settings.raster.neighbours);
  key.add("neighbour_radius", settings.raster.neighbourRadius);
}

void addAdjustOptions(const ModelSettings& model, StepKey& key) {
  const auto& configuration = model.configuration;
  key.add("model", configuration.TypeModel);
  key.addList("interval", configuration.DefaultInterval);
  key.add("iterations", configuration.NumberOfIterations);
  key.addList("weights", configuration.CellSizeWeights);
  key.addList("locked", model.locked);
  key.addList("held", model.held);
  key.add("relative", model.isRelative);
  key.add("split_back_strips", configuration.SplitBackStrips);
}

Funnel funnelOfPairs(const MatchReport& report) {
  Funnel sum;
  for (const auto& pair : report.pairs) {
    if (!pair.isGroundTruth) sum += pair.sum();
  }
  return sum;
}

/// Refuses what no adjustment could use, and says at which gate the candidates were lost.
void checkMatching(const MatchReport& report, const RunContext& run) {
  const auto isPair = [](const auto& pair) { return !pair.isGroundTruth; };
  if (std::ranges::none_of(report.pairs, isPair)) {
    throw Error(fmt::format(
        "no two of {} strips overlap where they have planar surfaces (search radius {} m); "
        "summary.json has the points of each strip",
        run.strips.size(), report.searchRadius));
  }
  const auto funnel = funnelOfPairs(report);
  if (funnel.kept > 0) return;
  throw Error(fmt::format(
      "no correspondences between strips: {} candidates, of which {} found nothing within {} m, {} "
      "disagreed in their normals, {} were rough and {} outliers. A wider --search-radius or "
      "--max-angle finds more; so does --coarse-rounds 4 where strips lie apart by many times the "
      "distance of their points",
      funnel.candidates, funnel.tooFar, report.searchRadius, funnel.angle, funnel.roughness,
      funnel.outlier));
}

/// What strips far apart have in common is the mounting. The rest is left to the finer rounds, for
/// the wrong pairs of the coarse ones would bend every strip.
void restrainToMisalignment(AdjustmentInput& input) {
  input.settings.fewestGroundTruth = 0;
  if (!input.settings.estimateMisalignment) return;
  input.settings.estimateOffsets = input.settings.estimateScales = false;
  input.settings.estimateLeverArm = false;
  auto& locked = input.configuration.LockedStrips;
  locked.clear();
  for (std::size_t strip = 0; strip < input.strips.size(); ++strip) {
    locked.insert(locked.end(), static_cast<int>(strip));
  }
}

/// A coarse round locks all strips; its lists would tell a user that none can be adjusted.
void removeListsOfHeld(const RunFolder& folder) {
  for (const char* name :
       {"03_Warning_LowCorrespondencesPersection.txt", "not_adjusted_strips.sh"}) {
    std::error_code ignored;
    fs::remove(folder.status() / name, ignored);
  }
}

std::string suffixOf(const Round& round) {
  return fmt::format("_round{}.txt", round.number);
}

}  // namespace

bool RoundWork::usesCoarseRounds() const {
  const bool both = run_.does("+correspondences") && run_.does("+optimization");
  return both && run_.settings.coarseRounds > 0;
}

StepRecord RoundWork::adjustRecord(const Round& round) const {
  return run_.folder.record("adjust_" + std::to_string(round.number));
}

StepKey RoundWork::matchKey(const Round& round) const {
  StepKey key("match " + std::to_string(round.number));
  addMatchOptions(run_.settings, round, key);
  key.addFiles("strip", run_.files.getStripFilesAndGroundTruth());
  key.addFiles("raster", run_.rasters());
  key.add("start", round.start ? round.start->digest : "delivered");
  return key;
}

/// Blocks that this run does not make count by themselves.
StepKey RoundWork::adjustKey(const Round& round) const {
  StepKey key("adjust " + std::to_string(round.number));
  addAdjustOptions(run_.settings.model, key);
  key.addFiles("trajectory", run_.files.getTrajectories());
  key.addFiles("strip", run_.files.getStripFilesAndGroundTruth());
  key.add("start", round.start ? round.start->digest : "delivered");
  if (run_.does("+correspondences")) {
    addMatchOptions(run_.settings, round, key);
    key.addFiles("raster", run_.rasters());
  } else {
    key.addFiles("block", run_.folder.blockFiles());
  }
  return key;
}

std::string RoundWork::digestOf(const Round& round) {
  return adjustKey(round).digest();
}

std::optional<RoundReport> RoundWork::finished(const Round& round) {
  if (run_.settings.force) return {};
  return adjustRecord(round).valid<RoundReport>(adjustKey(round));
}

MatchReport RoundWork::match(const Round& round) {
  const StepKey key = matchKey(round);
  const StepRecord record = run_.folder.record("match_" + std::to_string(round.number));
  const auto done = run_.settings.force ? std::nullopt : record.valid<MatchReport>(key);
  if (done) {
    tell(matchingLine(round.number, *done, true));
    return *done;
  }
  record.begin();
  MatchReport report = matchAnew(round);
  record.finish(key, run_.folder.blockFiles(), report);
  tell(matchingLine(round.number, report, false));
  return report;
}

MatchReport RoundWork::matchAnew(const Round& round) {
  auto configuration = run_.configuration();
  configuration.SearchRadius = round.radius;
  Velorn::SolverParameters parameters(run_.files.getStripFiles(), configuration);
  std::optional<Solution> solution;
  if (round.start) {
    const auto& model = round.start->files;
    orFail(parameters.restore(model.sections, model.parameters, model.stripIds));
    solution.emplace(Solution{parameters, run_.trajectory});
  }
  const auto* const start = solution ? &*solution : nullptr;
  MatchOptions options{run_.settings.match, run_.settings.raster.neighbours,
                       run_.settings.raster.neighbourRadius};
  auto files = run_.files;
  if (usesCoarseRounds()) {
    const Coarseness coarseness{round.scale, spacing()};
    configuration.SearchRadius = std::max(round.radius, coarseness.fewestRadius());
    files = stripsOfRound(run_, coarseness, start, configuration);
    options.neighbours = Coarseness::neighbours(options.neighbours);
    options.neighbourRadius *= round.scale;
    options.areFarApart = true;
    options.reach = run_.configuration().SearchRadius;
  }
  auto report = Flights::match(configuration, files, options, start, *run_.watcher);
  if (!round.isCoarse()) checkMatching(report, run_);
  return report;
}

double RoundWork::spacing() {
  if (!spacing_) spacing_ = spacingOfStrips(run_);
  return *spacing_;
}

AdjustmentReport RoundWork::adjust(const Round& round) {
  const auto blocks = run_.folder.blockFiles();
  if (!run_.does("+correspondences") && blocks.empty()) {
    throw Error(run_.folder.blocks().string() +
                ": holds no blocks of correspondences; match first");
  }
  adjustRecord(round).begin();
  AdjustmentInput input;
  input.strips = run_.files.getStripFiles();
  input.groundTruth = run_.groundTruth;
  input.trajectories = run_.files.getTrajectories();
  input.correspondences = run_.folder.blocks();
  input.configuration = run_.configuration();
  input.configuration.FileSuffix = suffixOf(round);
  input.settings = solverSettingsOf(run_.settings.model);
  input.threads = run_.settings.threads;
  input.repeatable = run_.settings.repeatable;
  if (round.isCoarse()) restrainToMisalignment(input);
  if (round.start) input.start = round.start->files;
  check(input);
  auto report = adjustedBy(input, run_.watcher);
  if (round.isCoarse()) removeListsOfHeld(run_.folder);
  return report;
}

void RoundWork::keep(const Round& round, const RoundReport& report) {
  std::vector<fs::path> outputs;
  if (report.adjustment) {
    const auto& files = report.adjustment->files;
    outputs = {files.sections, files.parameters, files.stripIds};
  }
  adjustRecord(round).finish(adjustKey(round), outputs, report);
}

}  // namespace Velorn::Flights
