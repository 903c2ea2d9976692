// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Adjustment.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <system_error>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include "flight/chain/CorrespondenceTimes.h"
#include "flight/chain/ReadableSums.h"
#include "flight/chain/RunRecording.h"
#include "flight/chain/Sufficiency.h"
#include "flight/chain/UnwrittenFiles.h"
#include "flight/matching/Match.h"
#include "flight/matching/SolverMemory.h"
#include "flight/records/RunFolder.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"
#include "flight/strips/Threads.h"
#include "platform/geomra/Degree.h"
#include "platform/plome/AvailableMemory.h"
#include "platform/plome/StringList.h"
#include <velorn/FileContainer.h>
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>

namespace Velorn::Flights {

namespace {

namespace fs = std::filesystem;

using Velorn::InputParameter;

void requireFile(const fs::path& file) {
  std::error_code fault;
  if (fs::is_regular_file(file, fault)) return;
  throw Error(file.string() + (fs::exists(file, fault) ? ": is not a file" : ": no such file"));
}

/// Of all output folders.
void makeFolders(const InputParameter& configuration) {
  for (const auto& folder : {configuration.getPrameterPath(), configuration.getStatusPath(),
                             configuration.getStatisticPath()}) {
    const fs::path path = configuration.RootPath / folder;
    makeFolder(path);
    if (access(path.c_str(), W_OK) == 0) continue;
    throw Error(path.string() + ": " + std::generic_category().message(errno), Error::NoSpace);
  }
}

Velorn::FileContainer listOfFiles(const AdjustmentInput& input) {
  const auto strips = std::make_shared<Plome::StringList>();
  for (const auto& strip : input.strips) strips->add(strip.string());
  std::vector<std::string> trajectories;
  for (const auto& file : input.trajectories) trajectories.push_back(file.string());
  Velorn::FileContainer files;
  orFail(files.add(strips, input.groundTruth.string(),
                   fmt::format("{}", fmt::join(trajectories, ","))));
  return files;
}

/// Of a run that did not come to the solver; says what the check's own words do not.
Error refusal(const std::string& fault, const AdjustmentInput& input,
              const Velorn::AdjustmentResult& result) {
  const auto& classes = result.correspondencesPerClass;
  if (classes.empty() || classes.front() >= input.settings.fewestGroundTruth) return Error(fault);
  return Error(
      fmt::format(
          "{}: only {} correspondences with the ground truth, {} are needed; --relative goes "
          "without, and then nothing controls position and tilt",
          input.correspondences.string(), classes.front(), input.settings.fewestGroundTruth),
      Error::TooLittleControl);
}

Fit fitOf(const OrvekStatistic::Summary& fit) {
  return {fit.moments.count, fit.moments.mean, fit.moments.rms,  fit.median,      fit.nmad,
          fit.quantiles[0],  fit.quantiles[1], fit.quantiles[2], fit.quantiles[3]};
}

FitReport fitOf(const Velorn::PhaseFigures& phase) {
  return {fitOf(phase.pairs), fitOf(phase.groundTruth)};
}

GlobalCorrections globalsOf(const Velorn::SolverParameters& parameters) {
  using Geomra::degreesPerRadian;
  GlobalCorrections values;
  for (unsigned int i = 0; i < 3; ++i) {
    const double unit = i == 0 ? 1.0 : degreesPerRadian;
    values.offsets[i] = parameters.getRangeAngleOffset(i) * unit;
    values.scales[i] = parameters.getRangeAngleScale(i);
    values.misalignment[i] = parameters.getMisalignment(i) * degreesPerRadian;
    values.leverArm[i] = parameters.getLeverArm(i);
  }
  return values;
}

/// @param valueOf  of a global unknown, in its unit
template <typename Value>
GlobalCorrections globalsOf(const std::vector<Velorn::Precision>& globals, bool areInUnits,
                            const Value& valueOf) {
  using Geomra::degreesPerRadian;
  GlobalCorrections values;
  const std::array blocks{&values.offsets, &values.scales, &values.misalignment, &values.leverArm};
  for (std::size_t i = 0; i < globals.size(); ++i) {
    const std::size_t block = i / 3;
    const bool isAngle = (block == 0 && i > 0) || block == 2;
    blocks.at(block)->at(i % 3) =
        valueOf(globals[i]) * (isAngle && areInUnits ? degreesPerRadian : 1.0);
  }
  return values;
}

DeviationReport deviationOf(std::string name, std::string unit,
                            const Velorn::GroupDeviation& group) {
  return {std::move(name), std::move(unit),    group.apriori,    group.sigma,
          group.count,     group.designEffect, group.redundancy, group.isEstimated};
}

std::vector<DeviationReport> deviationsOf(const Velorn::GroupDeviations& deviations) {
  constexpr std::array classes{"control", "roofs", "slopes", "bed", "flat"};
  constexpr std::array<const char*, Velorn::priorGroups> priors{
      "offsets",       "scales", "misalignment",   "lever arm",
      "position plan", "height", "roll and pitch", "yaw"};
  std::vector<DeviationReport> reports;
  for (std::size_t k = 0; k < deviations.classes.size() && k < classes.size(); ++k) {
    if (deviations.classes[k].count == 0) continue;
    reports.push_back(deviationOf(classes[k], "m", deviations.classes[k]));
  }
  for (std::size_t k = 0; k < priors.size(); ++k) {
    if (deviations.priors[k].count == 0) continue;
    reports.push_back(deviationOf(priors[k], "", deviations.priors[k]));
  }
  return reports;
}

AdjustmentReport reportOf(const Velorn::AdjustmentResult& result,
                          const std::vector<fs::path>& strips) {
  AdjustmentReport report;
  const auto nameOf = [&](std::size_t strip) { return strips.at(strip).filename().string(); };
  const auto& counts = result.correspondencesPerClass;
  std::copy_n(counts.begin(), std::min(counts.size(), report.correspondences.size()),
              report.correspondences.begin());
  report.before = fitOf(result.before);
  report.after = fitOf(result.after);
  for (const auto& section : result.sections) {
    if (!section.isConstant()) continue;
    const bool isLow = section.isLow && !section.isLocked;
    report.heldSections.push_back(
        {nameOf(section.strip), section.section, section.correspondences, isLow, section.isLocked});
  }
  for (const auto& strip : strips) report.redundancy.push_back({strip.filename().string()});
  for (const auto& section : result.sections) {
    auto& strip = report.redundancy.at(section.strip);
    strip.correspondences += section.correspondences;
    strip.unknowns += section.isConstant() ? 0 : static_cast<std::size_t>(section.coefficients);
  }
  const auto& movements = result.after.movements;
  for (std::size_t i = 0; i < movements.size() && i < strips.size(); ++i) {
    report.movements.push_back({nameOf(i), movements[i].horizontal90, movements[i].vertical90});
  }
  report.solver = result.end;
  if (!result.globals.empty()) {
    report.globalSigmas =
        globalsOf(result.globals, true, [](const auto& its) { return its.sigma; });
    report.globalPriorShares =
        globalsOf(result.globals, false, [](const auto& its) { return its.priorShare; });
  }
  report.deviations = deviationsOf(result.deviations);
  return report;
}

std::string notConverged(const Velorn::SolverEnd& end) {
  // What its linear algebra says when memory is refused to it.
  const bool lacksMemory = end.message.find("non-numeric causes") != std::string::npos;
  return fmt::format("the solver ended with {}: {}{}; the unknowns are not to be used",
                     end.termination, end.message,
                     lacksMemory ? " (not enough memory, as a rule)" : "");
}

/// The objects of one run, in the order in which they need each other.
class Adjustment {
 public:
  Adjustment(const AdjustmentInput& input, const Velorn::Trajectory& trajectory,
             const std::shared_ptr<Watcher>& watcher)
      : input_(input),
        configuration_(input.configuration),
        files_(listOfFiles(input)),
        trajectory_(trajectory),
        parameters_(std::make_shared<Velorn::SolverParameters>()),
        watcher_(watcher) {
    const InputParameter standard;  // of lengths that follow from points, which it does not see
    if (configuration_.MinCellSize == 0.0) configuration_.MinCellSize = standard.MinCellSize;
    if (configuration_.SearchRadius == 0.0) configuration_.SearchRadius = standard.SearchRadius;
    configuration_.CorrespondencePath = fs::absolute(input.correspondences);
    configuration_.progress = watcher;
  }

  void prepare(bool areOwnBlocks) {
    orFail(configuration_.check());
    if (!areOwnBlocks) orFail(timesOutsideTrajectory(configuration_, trajectory_));
    makeFolders(configuration_);
    files_.writeStripID(parameterFile("StripID"), false);
    configuration_.write(parameterFile("Configuration"), configuration_.speak(), false, false);
    *parameters_ = Velorn::SolverParameters(files_.getStripFiles(), configuration_);
    orFail(parameters_->setSections(configuration_.TypeModel, configuration_.DefaultInterval,
                                    trajectory_.getLeverarm(), trajectory_.getMisalignment(),
                                    configuration_.FileSuffix, configuration_.OverwriteToLinear,
                                    configuration_.OverwriteToSpline));
    if (!input_.start) return;
    orFail(parameters_->restore(input_.start->sections, input_.start->parameters,
                                input_.start->stripIds));
  }

  Adjusted run() {
    Velorn::CeresOptimization optimization(*parameters_, trajectory_, configuration_, files_);
    optimization.settings = input_.settings;
    const auto sums = sumsOf();
    for (const auto& sum : sums) optimization.settings.sums.push_back(sum.factors);
    optimization.settings.isCancelled = [this] { return watcher_->isCancelled(); };
    const std::string fault = solve(optimization);
    const auto& result = optimization.result();
    if (result.end.isCancelled()) {
      throw Error("cancelled while the solver was at work", Error::Interrupted);
    }
    if (!result.end.hasRun()) throw refusal(fault, input_, result);
    if (!input_.mayBeScarce) requireEnough(result.end, input_.correspondences);
    if (!optimization.failed()) {
      orFail(fault);
      orFail(parameters_->writeExactParameters(files().parameters), Error::NoSpace);
      requireReadable();
    }
    AdjustmentReport report = reportOf(result, files_.getStripFiles());
    report.globals = globalsOf(*parameters_);
    for (std::size_t k = 0; k < result.sums.size(); ++k) {
      report.sums.push_back(
          {sums[k].name, sums[k].unit, valueOf(sums[k], *parameters_), result.sums[k]});
    }
    report.files = files();
    return {std::move(report), parameters_};
  }

 private:
  std::vector<ReadableSum> sumsOf() const {
    if (!input_.settings.knowledge) return {};
    return readableSums(*parameters_, input_.facts, input_.typicalRange);
  }

  /// The library only tells the console of a file that does not take its text; a result that cannot
  /// be read back is none.
  void requireReadable() const {
    Velorn::SolverParameters readBack(files_.getStripFiles(), configuration_);
    const auto model = files();
    orFail(readBack.restore(model.sections, model.parameters, model.stripIds), Error::NoSpace);
  }

  /// The library leaves one thread to the host.
  std::string solve(Velorn::CeresOptimization& optimization) const {
    const int threads = input_.repeatable ? 1 : LoopThreads::numberOf(input_.threads);
    const LoopThreads andOne(static_cast<unsigned int>(threads) + 1);
    return optimization.run();
  }

  ModelFiles files() const {
    return {parameterFile("Sections"), parameterFile("Parameter"), parameterFile("StripID")};
  }

  fs::path parameterFile(const std::string& beginning) const {
    return configuration_.RootPath / configuration_.getPrameterPath() /
           (beginning + configuration_.FileSuffix);
  }

  const AdjustmentInput& input_;
  InputParameter configuration_;
  Velorn::FileContainer files_;
  const Velorn::Trajectory& trajectory_;
  std::shared_ptr<Velorn::SolverParameters> parameters_;
  std::shared_ptr<Watcher> watcher_;
};

}  // namespace

void check(const AdjustmentInput& input) {
  std::map<std::string, fs::path> names;
  for (const auto& strip : input.strips) {
    requireFile(strip);
    const auto [same, isNew] = names.emplace(strip.filename().string(), strip);
    if (!isNew) {
      throw Error(
          fmt::format("{} and {}: two strips of one name", same->second.string(), strip.string()));
    }
  }
  requireFile(input.groundTruth);
  for (const auto& file : input.trajectories) {
    requireFile(file);
    if (file.string().find(',') == std::string::npos) continue;
    throw Error(file.string() + ": the name of a trajectory must not hold a comma");
  }
  std::error_code fault;
  if (!fs::is_directory(input.correspondences, fault)) {
    throw Error(input.correspondences.string() + ": no such folder of correspondences");
  }
  if (fs::exists(input.correspondences / unfinishedName, fault)) {
    throw Error(input.correspondences.string() +
                ": the matching that writes it was not finished; match again");
  }
}

void requireConvergence(const Velorn::SolverEnd& end, const std::string& whenOutOfSteps) {
  if (end.isConvergence()) return;
  const bool outOfSteps = end.termination == "NO_CONVERGENCE";
  throw Error(notConverged(end) + (outOfSteps ? "; " + whenOutOfSteps : ""),
              outOfSteps ? Error::NoConvergence : Error::SolverFailed);
}

Adjusted adjustedBy(const AdjustmentInput& input, const Velorn::Trajectory& trajectory,
                    const std::shared_ptr<Watcher>& watcher, bool areOwnBlocks) {
  return UnwrittenFiles().refusedAfter([&] {
    Adjustment adjustment(input, trajectory, watcher);
    adjustment.prepare(areOwnBlocks);
    return adjustment.run();
  });
}

AdjustmentReport adjust(const AdjustmentInput& input, const Watch& watch) {
  check(input);
  requireSolverMemory(input.correspondences, input.settings.evaluation, Plome::availableMemory());
  const LoopThreads threads(input.threads);
  const auto watcher = std::make_shared<Watcher>(watch);
  const auto& root = input.configuration.RootPath;
  makeFolder(root);
  RunRecording recording(root, "+optimization", *watcher);
  return recording.during([&](RunState& state) {
    Velorn::Trajectory trajectory(input.trajectories);
    orFail(trajectory.importTrajectory());
    auto report = adjustedBy(input, trajectory, watcher, false).report;
    if (!report.solver.isConvergence()) {
      state.phase = RunState::Phase::failed;
      state.message = notConverged(report.solver);
      return report;
    }
    state.model = RunFolder(root, input.configuration).fromRoot(report.files);
    state.strips = input.strips;
    state.trajectories = input.trajectories;
    return report;
  });
}

}  // namespace Velorn::Flights
