// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/RoundWork.h"

#include <algorithm>
#include <cmath>
#include <system_error>

#include <fmt/format.h>

#include "flight/chain/Adjustment.h"
#include "flight/chain/PointMovement.h"
#include "flight/chain/Rasterizing.h"
#include "flight/chain/RoundStrips.h"
#include "flight/chain/StepSettings.h"
#include "flight/chain/StripsApart.h"
#include "flight/matching/ControlMisfits.h"
#include "flight/strips/OrFail.h"
#include "platform/geomra/Degree.h"

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

/// What a matching does in this round: its radius is never wider than that of the settings.
void addMatching(const FlightSettings& settings, const Round& round, StepKey& key) {
  addSettings(settings, Step::Match, key);
  key.add("radius", round.radius);
  key.add("control radius", round.controlRadius);
  key.add("sees anew", round.seesAnew);
  key.add("scale", round.scale);
}

Funnel funnelOfPairs(const MatchReport& report) {
  Funnel sum;
  for (const auto& pair : report.pairs) {
    if (!pair.isGroundTruth) sum += pair.sum();
  }
  return sum;
}

/// What helps where most candidates were lost.
std::string adviceFor(const Funnel& funnel) {
  constexpr std::size_t few = 100;
  if (funnel.candidates < few) return "a smaller --min-cell-size leaves more candidates";
  const auto most = std::max({funnel.tooFar, funnel.angle, funnel.roughness});
  if (most == funnel.roughness) return "a larger --max-roughness or more --most-neighbours";
  if (most == funnel.angle) return "more --coarse-rounds, or a wider --max-angle";
  return "more --coarse-rounds, or a wider --search-radius";
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
      "disagreed in their normals, {} were rough and {} outliers. What may help: {}",
      funnel.candidates, funnel.tooFar, report.searchRadius, funnel.angle, funnel.roughness,
      funnel.outlier, adviceFor(funnel)));
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

RoundPlan roundPlanOf(const RunContext& run) {
  RoundPlan plan{run.does("+correspondences"),
                 run.does("+optimization"),
                 {},
                 run.settings.rounds,
                 run.configuration().SearchRadius};
  if (run.scale) plan.noise = run.scale->noise;
  if (run.settings.coarseRounds >= 0) plan.coarse = run.settings.coarseRounds;
  return plan;
}

MatchOptions matchOptionsOf(const RunContext& run) {
  MatchOptions options{run.settings.match, run.settings.raster.neighbours,
                       run.settings.raster.neighbourRadius};
  options.mostNeighbours = run.settings.raster.mostNeighbours;
  options.roughest = run.settings.raster.maxRoughness;
  return options;
}

std::shared_ptr<const Velorn::SolverParameters> restoredParameters(const RunContext& run,
                                                                   const ModelFiles& files) {
  auto restored =
      std::make_shared<Velorn::SolverParameters>(run.files.getStripFiles(), run.configuration());
  orFail(restored->restore(files.sections, files.parameters, files.stripIds));
  return restored;
}

Velorn::APrioriKnowledge knowledgeFor(const RunContext& run) {
  auto known = knowledgeOf(run.settings.model.prior);
  const auto& trajectory = run.trajectory;
  const auto misalignment = trajectory.getMisalignment(), leverArm = trajectory.getLeverarm();
  known.deliveredMisalignment = {misalignment.x * Geomra::degree, misalignment.y * Geomra::degree,
                                 misalignment.z * Geomra::degree};
  known.deliveredLeverArm = {leverArm.x, leverArm.y, leverArm.z};
  if (run.scale && run.scale->noise > 0.0) known.pairs = run.scale->noise;
  return known;
}

namespace {

void weighByDeviations(RunContext& run, AdjustmentInput& input) {
  input.facts = run.strips;
  input.typicalRange = reachOf(run).range;
  input.settings.knowledge = knowledgeFor(run);
}

}  // namespace

AdjustmentInput adjustmentInputOf(RunContext& run, const Round& round) {
  AdjustmentInput input;
  input.strips = run.files.getStripFiles();
  input.groundTruth = run.groundTruth;
  input.trajectories = run.files.getTrajectories();
  input.correspondences = run.folder.blocks();
  input.configuration = run.configuration();
  input.configuration.FileSuffix = suffixOf(round);
  input.settings = solverSettingsOf(run.settings.model);
  input.threads = run.settings.threads;
  input.repeatable = run.settings.repeatable;
  if (round.isCoarse()) {
    restrainToMisalignment(input);
  } else if (run.settings.model.prior.isUsed) {
    weighByDeviations(run, input);
  }
  if (round.start) input.start = round.start->files;
  return input;
}

StepRecord RoundWork::adjustRecord(const Round& round) const {
  return run_.folder.record("adjust_" + std::to_string(round.number));
}

StepRecord RoundWork::matchRecord(const Round& round) const {
  return run_.folder.record("match_" + std::to_string(round.number));
}

StepKey RoundWork::matchKey(const Round& round) const {
  StepKey key("match " + std::to_string(round.number));
  addMatching(run_.settings, round, key);
  key.addFiles("strip", run_.files.getStripFilesAndGroundTruth());
  key.addFiles("surface", run_.surfaceFiles());
  key.add("start", round.start ? round.start->digest : "delivered");
  return key;
}

/// Blocks that this run does not make count by themselves.
StepKey RoundWork::adjustKey(const Round& round) const {
  StepKey key("adjust " + std::to_string(round.number));
  addSettings(run_.settings, Step::Adjust, key);
  key.addFiles("trajectory", run_.files.getTrajectories());
  key.addFiles("strip", run_.files.getStripFilesAndGroundTruth());
  key.add("start", round.start ? round.start->digest : "delivered");
  if (run_.does("+correspondences")) {
    addMatching(run_.settings, round, key);
    key.addFiles("surface", run_.surfaceFiles());
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
  requireSurfaces(run_);
  const StepKey key = matchKey(round);
  const StepRecord record = matchRecord(round);
  const auto done = run_.settings.force ? std::nullopt : record.valid<MatchReport>(key);
  if (done) {
    tell(matchingLine(round.number, *done, true));
    return *done;
  }
  record.begin();
  run_.requireInputs();
  MatchReport report = matchAnew(round, {run_.folder.root(), run_.folder.rastersOfRound(), {}});
  requireSurfaces(run_);
  run_.requireInputs();
  record.finish(key, run_.folder.blockFiles(), report);
  tell(matchingLine(round.number, report, false));
  return report;
}

/// The model in memory, where it is the one that was adjusted last.
std::shared_ptr<const Velorn::SolverParameters> RoundWork::parametersOf(
    const RoundModel& model) const {
  if (adjustedFiles_ && adjustedFiles_->parameters == model.files.parameters) return adjusted_;
  return restoredParameters(run_, model.files);
}

std::optional<MatchReport> RoundWork::matched(const Round& round) const {
  return matchRecord(round).valid<MatchReport>(matchKey(round));
}

void RoundWork::requireRound(const Round& round) const {
  const StepRecord adjusted = adjustRecord(round);
  if (run_.does("+optimization") && adjusted.exists()) {
    adjusted.requireValid(adjustKey(round));
  } else {
    matchRecord(round).requireValid(matchKey(round));
  }
}

MatchReport RoundWork::matchAgain(const Round& round, const fs::path& scratch,
                                  const PairObserver& observe) {
  requireSurfaces(run_);
  MatchReport report = matchAnew(round, {scratch, scratch / "rasters", observe});
  requireSurfaces(run_);
  run_.requireInputs();
  return report;
}

MatchReport RoundWork::matchAnew(const Round& round, const Output& output) {
  auto configuration = run_.configuration();
  configuration.RootPath = output.root;
  configuration.SearchRadius = round.radius;
  const auto parameters = round.start ? parametersOf(*round.start) : nullptr;
  std::optional<Solution> solution;
  if (parameters) solution.emplace(Solution{*parameters, run_.trajectory});
  const auto* const start = solution ? &*solution : nullptr;
  MatchOptions options = matchOptionsOf(run_);
  options.controlReach = std::max(run_.configuration().SearchRadius, round.controlRadius);
  options.weighsControl = round.start && !round.isCoarse();
  std::optional<SurfaceStore> views;
  if (round.seesAnew) {
    const Coarseness coarseness{round.scale, spacing()};
    if (round.isCoarse()) {
      configuration.SearchRadius = std::max(round.radius, coarseness.fewestRadius());
      options.neighbours = Coarseness::neighbours(options.neighbours);
      options.mostNeighbours = options.neighbours;
      options.neighbourRadius *= round.scale;
      options.areFarApart = true;
    }
    views = stripsOfRound(run_, output.rasters, coarseness, start, configuration);
  }
  options.reach = std::max(configuration.SearchRadius, options.controlReach) + movedBy(start);
  auto report = Flights::match(configuration, views ? *views : run_.surfaces, options, start,
                               *run_.watcher, output.observe);
  if (!round.isCoarse()) checkMatching(report, run_);
  return report;
}

SurfaceStore RoundWork::seenAnew(const RoundModel& model) {
  auto configuration = run_.configuration();
  const auto parameters = parametersOf(model);
  const Solution solution{*parameters, run_.trajectory};
  return stripsOfRound(run_, run_.folder.rastersOfRound(), {1.0, spacing()}, &solution,
                       configuration);
}

ApartReport RoundWork::apart() {
  requireSurfaces(run_);
  auto apart = stripsApart(run_, spacing());
  tell(textOf(apart));
  return apart;
}

/// How far points lie from where they were delivered, by which overlaps are seen [m].
double RoundWork::movedBy(const Solution* start) {
  if (!start) return run_.configuration().SearchRadius;
  const double moved = movementOf(run_, nullptr, *start).points;
  return std::isfinite(moved) ? moved : run_.configuration().SearchRadius;
}

double RoundWork::spacing() {
  if (run_.scale && std::isfinite(run_.scale->spacing)) return run_.scale->spacing;
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
  AdjustmentInput input = adjustmentInputOf(run_, round);
  input.mayBeScarce = round.isCoarse();
  check(input);
  const FilesAtRest atRest(blocks);
  if (run_.does("+correspondences")) matchRecord(round).requireOutputs(blocks, "match again");
  run_.requireInputs();
  const auto start = round.start ? parametersOf(*round.start) : nullptr;
  auto adjusted = adjustedBy(input, run_.trajectory, run_.watcher, run_.does("+correspondences"));
  run_.requireInputs();
  atRest.requireUnchanged();
  if (run_.does("+correspondences")) {
    std::optional<Solution> before;
    if (start) before.emplace(Solution{*start, run_.trajectory});
    const Movement movement =
        movementOf(run_, before ? &*before : nullptr, {*adjusted.parameters, run_.trajectory});
    adjusted.report.moved = movement.points;
    adjusted.report.movedByOne = movement.byOne;
  }
  adjusted_ = std::move(adjusted.parameters);
  adjustedFiles_ = adjusted.report.files;
  if (round.isCoarse()) removeListsOfHeld(run_.folder);
  if (fs::exists(run_.surfaces.groundTruth())) {
    adjusted.report.control = controlMisfits(blocks, GroundTruth(run_.surfaces.knownPoints()),
                                             {*adjusted_, run_.trajectory}, run_.configuration());
  }
  return std::move(adjusted.report);
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
