// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Rounds.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "flight/chain/RoundStrips.h"
#include "flight/matching/SolverMemory.h"
#include "flight/records/ReportJson.h"
#include "flight/strips/OrFail.h"
#include <velorn/SolverParameters.h>

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

constexpr double smallestChange = 0.01;  // of the RMS of the pairs, from round to round

/// One round of several.
struct Stage {
  unsigned int number = 1;
  double radius = 0.0;  // of the search [m]
  double scale = 1.0;

  bool isCoarse() const { return scale > 1.0; }
};

Json matchOptions(const Project& project, const Stage& stage) {
  const auto& match = project.match;
  return {{"search_radius", stage.radius},
          {"scale", stage.scale},
          {"coarse_rounds", project.coarseRounds},
          {"max_angle", project.configuration().ThresholdMaxAngle},
          {"max_correspondences", match.maxCorrespondences},
          {"seed", match.seed},
          {"onto_planes", match.ontoPlanes},
          {"neighbours", match.neighbours},
          {"neighbour_radius", match.neighbourRadius}};
}

Json adjustOptions(const Model& model) {
  const auto& configuration = model.configuration;
  return {{"model", configuration.TypeModel},
          {"interval", configuration.DefaultInterval},
          {"iterations", configuration.NumberOfIterations},
          {"weights", configuration.CellSizeWeights},
          {"locked", model.locked},
          {"held", model.held},
          {"relative", model.isRelative},
          {"split_back_strips", configuration.SplitBackStrips}};
}

Funnel funnelOf(const MatchReport& report) {
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
  const auto funnel = funnelOf(report);
  if (funnel.kept > 0) return;
  throw Error(fmt::format(
      "no correspondences between strips: {} candidates, of which {} found nothing within {} m, {} "
      "disagreed in their normals, {} were rough and {} outliers. A wider --search-radius or "
      "--max-angle finds more; so does --coarse-rounds 4 where strips lie apart by many times the "
      "distance of their points",
      funnel.candidates, funnel.tooFar, report.searchRadius, funnel.angle, funnel.roughness,
      funnel.outlier));
}

std::string matchingLine(unsigned int round, const Json& matching, bool isSkipped) {
  return fmt::format(
      "round {}: {} correspondences of {} pairs, {} with the ground truth, search radius {:.2f} "
      "m{}",
      round, matching["correspondences"].get<std::size_t>(), matching["pairs"].size(),
      matching["with_ground_truth"].get<std::size_t>(), matching["search_radius"].get<double>(),
      isSkipped ? "; unchanged, skipped" : "");
}

double rmsOf(const Json& adjustment, const char* phase) {
  const auto& rms = adjustment[phase]["pairs"]["rms"];
  return rms.is_number() ? rms.get<double>() : std::nan("");
}

std::string adjustmentLine(unsigned int round, const Json& adjustment, bool isSkipped) {
  const auto end = adjustment["solver"]["termination"].get<std::string>();
  const double before = rmsOf(adjustment, "before"), after = rmsOf(adjustment, "after");
  if (!std::isfinite(after)) return fmt::format("round {}: {}", round, end);
  return fmt::format("round {}: {}; pairs fit to {:.2f} cm, before {:.2f} cm{}", round, end,
                     100.0 * after, 100.0 * before, isSkipped ? "; unchanged, skipped" : "");
}

ModelFiles modelOf(const Json& adjustment) {
  const auto& files = adjustment["files"];
  return {files["sections"].get<std::string>(), files["parameters"].get<std::string>(),
          files["strip_ids"].get<std::string>()};
}

std::vector<fs::path> blocksIn(const fs::path& folder) {
  std::vector<fs::path> blocks;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() == ".kx") blocks.push_back(entry.path());
  }
  std::ranges::sort(blocks);
  return blocks;
}

/// From coarse to fine: what is left to search for is the distance of neighbouring points and the
/// disagreement that the last adjustment left.
double nextRadius(double widest, const Json& round) {
  if (!round.contains("adjustment")) return widest;
  const auto& typical = round["matching"]["typical_distance"];
  const double rms = rmsOf(round["adjustment"], "after");
  if (!typical.is_number() || !std::isfinite(rms)) return widest;
  return std::min(widest, 3.0 * typical.get<double>() + 4.0 * rms);
}

/// What strips far apart have in common is the mounting. The rest is left to the finer rounds, for
/// the wrong pairs of the coarse ones would bend every strip.
void restrainToMisalignment(AdjustmentJob& job) {
  job.settings.fewestGroundTruth = 0;
  if (!job.settings.estimateMisalignment) return;
  job.settings.estimateOffsets = job.settings.estimateScales = false;
  job.settings.estimateLeverArm = false;
  auto& locked = job.configuration.LockedStrips;
  locked.clear();
  for (std::size_t strip = 0; strip < job.strips.size(); ++strip) {
    locked.insert(locked.end(), static_cast<int>(strip));
  }
}

class Rounds {
 public:
  explicit Rounds(const RunContext& run)
      : run_(run),
        both_(run.project.does("+correspondences") && run.project.does("+optimization")),
        coarse_(both_ ? run.project.coarseRounds : 0),
        most_(both_ ? coarse_ + run.project.rounds : 1) {}

  RoundsResult all() {
    const double widest = run_.configuration().SearchRadius;
    Stage stage{1, widest};
    for (; stage.number <= most_; ++stage.number) {
      stage.scale = stage.number > coarse_ ? 1.0 : std::exp2(0.5 * (coarse_ + 1 - stage.number));
      const Json report = one(stage);
      const bool isLast = !stage.isCoarse() &&
                          (!report.contains("adjustment") || !result_.model || isSettledBy(report));
      result_.reports.push_back(report);
      if (isLast || isGivenUp(report)) break;
      if (both_) stage.radius = nextRadius(widest, report);
    }
    return result_;
  }

 private:
  /// Whether a solver did not converge.
  bool isGivenUp(const Json& report) const {
    return report.contains("adjustment") && !result_.model;
  }

  Json matched(const Stage& stage) {
    const std::string round = std::to_string(stage.number);
    Json key = keyOf("match " + round);
    key["options"] = matchOptions(run_.project, stage);
    key["strips"] = stampsOf(run_.files.getStripFilesAndGroundTruth());
    key["rasters"] = stampsOf(run_.rasters());
    key["start"] = result_.key.is_null() ? Json() : Json(digestOf(result_.key));
    const StepRecord record = run_.recordOf("match_" + round);
    const auto done = run_.project.force ? std::nullopt : record.valid(key);
    if (done) {
      run_.output.tell(matchingLine(stage.number, *done, true));
      return *done;
    }
    record.begin();
    Json report = match(stage);
    record.finish(key, blocksIn(run_.inRoot(run_.configuration().getCorrespondencePath())), report);
    run_.output.tell(matchingLine(stage.number, report, false));
    return report;
  }

  /// The matching of a round is looked at only when its adjustment has to be done, for the blocks
  /// of an earlier round are gone, and in the last round, so that the blocks belong to the model.
  Json one(const Stage& stage) {
    const auto& project = run_.project;
    const StepRecord record = run_.recordOf("adjust_" + std::to_string(stage.number));
    if (project.does("+optimization")) {
      auto done = project.force ? std::nullopt : record.valid(adjustKey(stage));
      if (done) return taken(stage, std::move(*done));
    }
    Json report{{"round", stage.number}};
    if (stage.isCoarse()) report["scale"] = stage.scale;
    if (project.does("+correspondences")) {
      report["matching"] = matched(stage);
      if (isTooCoarse(stage, report["matching"])) {
        record.finish(adjustKey(stage), {}, report);
        return report;
      }
    } else {
      requireBlocks();
    }
    if (project.does("+optimization")) adjustAnew(stage, record, report);
    return report;
  }

  /// A round that an earlier run has.
  Json taken(const Stage& stage, Json done) {
    const auto& project = run_.project;
    done["skipped"] = true;
    if (!done.contains("adjustment")) {
      run_.output.tell(matchingLine(stage.number, done["matching"], true));
      return done;
    }
    const bool isLast = !stage.isCoarse() && (stage.number == most_ || isSettledBy(done));
    if (isLast && project.does("+correspondences")) matched(stage);
    result_.key = adjustKey(stage);
    result_.model = modelOf(done["adjustment"]);
    run_.output.tell(adjustmentLine(stage.number, done["adjustment"], true));
    return done;
  }

  /// A scene may have next to no planes of that size. Its finer ones may do.
  bool isTooCoarse(const Stage& stage, const Json& matching) const {
    constexpr std::size_t fewest = 10;
    const auto between = matching["correspondences"].get<std::size_t>() -
                         matching["with_ground_truth"].get<std::size_t>();
    if (!stage.isCoarse() || between >= fewest) return false;
    run_.output.tell(
        fmt::format("round {}: {} correspondences between strips are too few at {:.1f} "
                    "times the distance of the points; the next round is finer",
                    stage.number, between, stage.scale));
    return true;
  }

  void adjustAnew(const Stage& stage, const StepRecord& record, Json& report) {
    record.begin();
    const Json key = adjustKey(stage);
    const auto outcome = adjusted(stage);
    report["adjustment"] = reportOf(outcome);
    run_.output.tell(adjustmentLine(stage.number, report["adjustment"], false));
    result_.key = key;
    result_.model.reset();
    if (!outcome.result.end.isConvergence()) return;
    result_.model = outcome.files;
    const auto& files = outcome.files;
    record.finish(key, {files.sections, files.parameters, files.stripIds}, report);
  }

  void requireBlocks() const {
    const auto folder = run_.inRoot(run_.configuration().getCorrespondencePath());
    if (!blocksIn(folder).empty()) return;
    throw Error(folder.string() + ": holds no blocks of correspondences; match first");
  }

  /// Blocks that this run does not make count by themselves.
  Json adjustKey(const Stage& stage) const {
    Json key = keyOf("adjust " + std::to_string(stage.number));
    key["options"] = adjustOptions(run_.project.model);
    key["trajectory"] = stampsOf(run_.files.getTrajectories());
    key["strips"] = stampsOf(run_.files.getStripFilesAndGroundTruth());
    key["start"] = result_.key.is_null() ? Json() : Json(digestOf(result_.key));
    if (run_.project.does("+correspondences")) {
      key["matching"] = matchOptions(run_.project, stage);
      key["rasters"] = stampsOf(run_.rasters());
    } else {
      key["blocks"] = stampsOf(blocksIn(run_.inRoot(run_.configuration().getCorrespondencePath())));
    }
    return key;
  }

  Json match(const Stage& stage) {
    auto configuration = run_.configuration();
    configuration.SearchRadius = stage.radius;
    Velorn::SolverParameters parameters(run_.files.getStripFiles(), configuration);
    std::optional<Solution> solution;
    if (result_.model) {
      const auto& model = *result_.model;
      orFail(parameters.restore(model.sections, model.parameters, model.stripIds));
      solution.emplace(Solution{parameters, run_.trajectory});
    }
    const auto* const start = solution ? &*solution : nullptr;
    auto options = run_.project.match;
    auto files = run_.files;
    if (coarse_ > 0) {
      const Coarseness coarseness{stage.scale, spacing()};
      configuration.SearchRadius = std::max(stage.radius, coarseness.fewestRadius());
      files = stripsOfRound(run_, coarseness, start, configuration);
      options.neighbours = coarseness.neighbours(options.neighbours);
      options.neighbourRadius *= stage.scale;
      options.areFarApart = true;
      options.reach = run_.configuration().SearchRadius;
    }
    const auto report = Flights::match(configuration, files, options, start, *run_.output.progress);
    if (!stage.isCoarse()) checkMatching(report, run_);
    return reportOf(report);
  }

  /// Measured once, when it is needed first.
  double spacing() {
    if (!spacing_) spacing_ = spacingOfStrips(run_);
    return *spacing_;
  }

  AdjustmentOutcome adjusted(const Stage& stage) {
    AdjustmentJob job;
    job.strips = run_.files.getStripFiles();
    job.groundTruth = run_.groundTruth;
    job.trajectories = run_.files.getTrajectories();
    job.correspondences = run_.inRoot(run_.configuration().getCorrespondencePath());
    job.configuration = run_.configuration();
    job.configuration.FileSuffix = fmt::format("_round{}.txt", stage.number);
    job.settings = run_.project.model.settings;
    if (stage.isCoarse()) restrainToMisalignment(job);
    job.start = result_.model;
    warnOfMemory(blocksIn(job.correspondences));
    checkJob(job);
    return adjust(job, run_.output.progress);
  }

  /// A correspondence takes some 220 bytes of a block.
  void warnOfMemory(const std::vector<fs::path>& blocks) const {
    std::uintmax_t bytes = 0;
    for (const auto& block : blocks) bytes += fs::file_size(block);
    const double needed = static_cast<double>(bytes) / 220.0 * bytesOfSolver;
    const auto free = static_cast<double>(availableMemory());
    if (free == 0.0 || needed < free) return;
    run_.output.tell(fmt::format(
        "warning: the solver may need {:.1f} GB, {:.1f} GB are free; --max-correspondences takes "
        "fewer",
        needed / 1e9, free / 1e9));
  }

  /// Whether a round fits as well as the round before, which was no coarse one.
  bool isSettledBy(const Json& report) const {
    const std::size_t fine =
        result_.reports.size() - std::min<std::size_t>(result_.reports.size(), coarse_);
    if (fine == 0 || !result_.reports.back().contains("adjustment")) return false;
    const double before = rmsOf(result_.reports.back()["adjustment"], "after");
    return std::abs(rmsOf(report["adjustment"], "after") - before) < smallestChange * before;
  }

  const RunContext& run_;
  bool both_;  // matching and adjusting take turns
  unsigned int coarse_, most_;
  RoundsResult result_;
  std::optional<double> spacing_;
};

}  // namespace

RoundsResult runRounds(const RunContext& run) {
  return Rounds(run).all();
}

}  // namespace Velorn::Flights
