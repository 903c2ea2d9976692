// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/run/Rounds.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/Failure.h"
#include "host/matching/SolverMemory.h"
#include "host/run/Reports.h"
#include <velorn/SolverParameters.h>

namespace {

namespace fs = std::filesystem;

constexpr double smallestChange = 0.01;  // of the RMS of the pairs, from round to round

Json matchOptions(const Project& project, double searchRadius) {
  const auto& match = project.match;
  return {{"search_radius", searchRadius},
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

Matching::Funnel funnelOf(const Matching::MatchReport& report) {
  Matching::Funnel sum;
  for (const auto& pair : report.pairs) {
    if (!pair.isGroundTruth) sum += pair.sum();
  }
  return sum;
}

/// Refuses what no adjustment could use, and says at which gate the candidates were lost.
void checkMatching(const Matching::MatchReport& report, const RunContext& run) {
  const auto isPair = [](const auto& pair) { return !pair.isGroundTruth; };
  if (std::ranges::none_of(report.pairs, isPair)) {
    throw Failure(fmt::format(
        "no two of {} strips overlap where they have planar surfaces (search radius {} m); "
        "summary.json has the points of each strip",
        run.strips.size(), report.searchRadius));
  }
  const auto funnel = funnelOf(report);
  if (funnel.kept > 0) return;
  throw Failure(fmt::format(
      "no correspondences between strips: {} candidates, of which {} found nothing within {} m, {} "
      "disagreed in their normals, {} were rough and {} outliers. A wider --search-radius or "
      "--max-angle finds more",
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
  const auto& typical = round["matching"]["typical_distance"];
  const double rms = rmsOf(round["adjustment"], "after");
  if (!typical.is_number() || !std::isfinite(rms)) return widest;
  return std::min(widest, 3.0 * typical.get<double>() + 4.0 * rms);
}

class Rounds {
 public:
  explicit Rounds(const RunContext& run) : run_(run) {}

  RoundsResult all() {
    const bool both = run_.project.does("+correspondences") && run_.project.does("+optimization");
    const unsigned int most = both ? run_.project.rounds : 1;
    double radius = run_.configuration().SearchRadius;
    for (unsigned int round = 1; round <= most; ++round) {
      const Json report = one(round, radius);
      const bool isLast =
          !report.contains("adjustment") || !result_.model || isSettledBy(report["adjustment"]);
      result_.reports.push_back(report);
      if (isLast) break;
      if (both) radius = nextRadius(run_.configuration().SearchRadius, report);
    }
    return result_;
  }

 private:
  Json matched(unsigned int round, double radius) {
    Json key = keyOf("match " + std::to_string(round));
    key["options"] = matchOptions(run_.project, radius);
    key["strips"] = stampsOf(run_.files.getStripFilesAndGroundTruth());
    key["rasters"] = stampsOf(run_.rasters());
    key["start"] = result_.key.is_null() ? Json() : Json(digestOf(result_.key));
    const StepRecord record = run_.recordOf("match_" + std::to_string(round));
    const auto done = run_.project.force ? std::nullopt : record.valid(key);
    if (done) {
      run_.output.tell(matchingLine(round, *done, true));
      return *done;
    }
    record.begin();
    Json report = match(radius);
    record.finish(key, blocksIn(run_.inRoot(run_.configuration().getCorrespondencePath())), report);
    run_.output.tell(matchingLine(round, report, false));
    return report;
  }

  /// The matching of a round is looked at only when its adjustment has to be done, for the blocks
  /// of an earlier round are gone, and in the last round, so that the blocks belong to the model.
  Json one(unsigned int round, double radius) {
    const auto& project = run_.project;
    Json report{{"round", round}};
    if (!project.does("+optimization")) {
      report["matching"] = matched(round, radius);
      return report;
    }
    const StepRecord record = run_.recordOf("adjust_" + std::to_string(round));
    if (auto done = project.force ? std::nullopt : record.valid(adjustKey(round, radius))) {
      const bool isLast = round == project.rounds || isSettledBy((*done)["adjustment"]);
      if (isLast && project.does("+correspondences")) matched(round, radius);
      result_.key = adjustKey(round, radius);
      result_.model = modelOf((*done)["adjustment"]);
      run_.output.tell(adjustmentLine(round, (*done)["adjustment"], true));
      (*done)["skipped"] = true;
      return *done;
    }
    if (project.does("+correspondences")) {
      report["matching"] = matched(round, radius);
    } else {
      requireBlocks();
    }
    record.begin();
    const Json key = adjustKey(round, radius);
    const auto outcome = adjusted(round);
    report["adjustment"] = reportOf(outcome);
    run_.output.tell(adjustmentLine(round, report["adjustment"], false));
    result_.key = key;
    result_.model.reset();
    if (!outcome.result.end.isConvergence()) return report;
    result_.model = outcome.files;
    const auto& files = outcome.files;
    record.finish(key, {files.sections, files.parameters, files.stripIds}, report);
    return report;
  }

  void requireBlocks() const {
    const auto folder = run_.inRoot(run_.configuration().getCorrespondencePath());
    if (!blocksIn(folder).empty()) return;
    throw Failure(folder.string() + ": holds no blocks of correspondences; match first");
  }

  /// Blocks that this run does not make count by themselves.
  Json adjustKey(unsigned int round, double radius) const {
    Json key = keyOf("adjust " + std::to_string(round));
    key["options"] = adjustOptions(run_.project.model);
    key["trajectory"] = stampsOf(run_.files.getTrajectories());
    key["strips"] = stampsOf(run_.files.getStripFilesAndGroundTruth());
    key["start"] = result_.key.is_null() ? Json() : Json(digestOf(result_.key));
    if (run_.project.does("+correspondences")) {
      key["matching"] = matchOptions(run_.project, radius);
      key["rasters"] = stampsOf(run_.rasters());
    } else {
      key["blocks"] = stampsOf(blocksIn(run_.inRoot(run_.configuration().getCorrespondencePath())));
    }
    return key;
  }

  Json match(double radius) {
    auto configuration = run_.configuration();
    configuration.SearchRadius = radius;
    Velorn::SolverParameters parameters(run_.files.getStripFiles(), configuration);
    std::optional<Matching::Solution> solution;
    if (result_.model) {
      const auto& model = *result_.model;
      orFail(parameters.restore(model.sections, model.parameters, model.stripIds));
      solution.emplace(Matching::Solution{parameters, run_.trajectory});
    }
    const auto report = Matching::match(configuration, run_.files, run_.project.match,
                                        solution ? &*solution : nullptr, *run_.output.progress);
    checkMatching(report, run_);
    return reportOf(report);
  }

  AdjustmentOutcome adjusted(unsigned int round) {
    AdjustmentJob job;
    job.strips = run_.files.getStripFiles();
    job.groundTruth = run_.groundTruth;
    job.trajectories = run_.files.getTrajectories();
    job.correspondences = run_.inRoot(run_.configuration().getCorrespondencePath());
    job.configuration = run_.configuration();
    job.configuration.FileSuffix = fmt::format("_round{}.txt", round);
    job.settings = run_.project.model.settings;
    job.start = result_.model;
    warnOfMemory(blocksIn(job.correspondences));
    checkJob(job);
    return adjust(job, run_.output.progress);
  }

  /// A correspondence takes some 220 bytes of a block.
  void warnOfMemory(const std::vector<fs::path>& blocks) const {
    std::uintmax_t bytes = 0;
    for (const auto& block : blocks) bytes += fs::file_size(block);
    const double needed = static_cast<double>(bytes) / 220.0 * Matching::bytesOfSolver;
    const auto free = static_cast<double>(Matching::availableMemory());
    if (free == 0.0 || needed < free) return;
    run_.output.tell(fmt::format(
        "warning: the solver may need {:.1f} GB, {:.1f} GB are free; --max-correspondences takes "
        "fewer",
        needed / 1e9, free / 1e9));
  }

  /// Whether the adjustment of a round fits as well as that of the round before.
  bool isSettledBy(const Json& adjustment) const {
    if (result_.reports.empty()) return false;
    const double before = rmsOf(result_.reports.back()["adjustment"], "after");
    return std::abs(rmsOf(adjustment, "after") - before) < smallestChange * before;
  }

  const RunContext& run_;
  RoundsResult result_;
};

}  // namespace

RoundsResult runRounds(const RunContext& run) {
  return Rounds(run).all();
}
