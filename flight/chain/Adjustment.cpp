// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Adjustment.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <system_error>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <omp.h>
#include <unistd.h>

#include "flight/chain/CorrespondenceTimes.h"
#include "flight/matching/Match.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/OutputPlaces.h"
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

Velorn::FileContainer listOfFiles(const AdjustmentJob& job) {
  const auto strips = std::make_shared<Plome::StringList>();
  for (const auto& strip : job.strips) strips->add(strip.string());
  std::vector<std::string> trajectories;
  for (const auto& file : job.trajectories) trajectories.push_back(file.string());
  Velorn::FileContainer files;
  orFail(
      files.add(strips, job.groundTruth.string(), fmt::format("{}", fmt::join(trajectories, ","))));
  return files;
}

/// Gives the solver all cores, and one thread at least, for one scope.
class SolverThreads {
 public:
  SolverThreads() : before_(omp_get_max_threads()) {
    omp_set_num_threads(std::max(2, omp_get_num_procs() + 1));
  }
  ~SolverThreads() { omp_set_num_threads(before_); }
  SolverThreads(const SolverThreads&) = delete;
  SolverThreads& operator=(const SolverThreads&) = delete;

 private:
  int before_;
};

/// Of a run that did not come to the solver; says what the check's own words do not.
Error refusal(const std::string& fault, const AdjustmentJob& job,
              const Velorn::AdjustmentResult& result) {
  const auto& classes = result.correspondencesPerClass;
  if (classes.empty() || classes.front() >= job.settings.fewestGroundTruth) return Error(fault);
  return Error(
      fmt::format(
          "{}: only {} correspondences with the ground truth, {} are needed; --relative goes "
          "without, and then nothing controls position and tilt",
          job.correspondences.string(), classes.front(), job.settings.fewestGroundTruth),
      Error::TooLittleControl);
}

/// The objects of one run, in the order in which they need each other.
class Adjustment {
 public:
  Adjustment(const AdjustmentJob& job, const std::shared_ptr<Kestrum::LoaderProgress>& progress)
      : job_(job),
        configuration_(job.configuration),
        files_(listOfFiles(job)),
        trajectory_(files_.getTrajectories()) {
    configuration_.CorrespondencePath = fs::absolute(job.correspondences);
    configuration_.progress = progress;
  }

  void prepare() {
    orFail(configuration_.check());
    orFail(trajectory_.importTrajectory());
    orFail(timesOutsideTrajectory(configuration_, trajectory_));
    makeFolders(configuration_);
    files_.writeStripID(parameterFile("StripID"), false);
    configuration_.write(parameterFile("Configuration"), configuration_.speak(), false, false);
    parameters_ = Velorn::SolverParameters(files_.getStripFiles(), configuration_);
    orFail(parameters_.setSections(configuration_.TypeModel, configuration_.DefaultInterval,
                                   trajectory_.getLeverarm(), trajectory_.getMisalignment(),
                                   configuration_.FileSuffix, configuration_.OverwriteToLinear,
                                   configuration_.OverwriteToSpline));
    if (!job_.start) return;
    orFail(parameters_.restore(job_.start->sections, job_.start->parameters, job_.start->stripIds));
  }

  AdjustmentOutcome run() {
    Velorn::CeresOptimization optimization(parameters_, trajectory_, configuration_, files_);
    optimization.settings = job_.settings;
    const std::string fault = solve(optimization);
    const auto& result = optimization.result();
    if (!result.end.hasRun()) throw refusal(fault, job_, result);
    if (!optimization.failed()) {
      orFail(fault);
      orFail(parameters_.writeExactParameters(parameterFile("Parameter")), Error::NoSpace);
      requireReadable();
    }
    const ModelFiles model{parameterFile("Sections"), parameterFile("Parameter"),
                           parameterFile("StripID")};
    AdjustmentOutcome outcome{{}, result, model, globals()};
    for (const auto& strip : files_.getStripFiles()) {
      outcome.strips.push_back(strip.filename().string());
    }
    return outcome;
  }

 private:
  /// The library only tells the console of a file that does not take its text; a result that cannot
  /// be read back is none.
  void requireReadable() const {
    Velorn::SolverParameters readBack(files_.getStripFiles(), configuration_);
    orFail(readBack.restore(parameterFile("Sections"), parameterFile("Parameter"),
                            parameterFile("StripID")),
           Error::NoSpace);
  }

  static std::string solve(Velorn::CeresOptimization& optimization) {
    const SolverThreads threads;
    return optimization.run();
  }

  Globals globals() const {
    Globals values;
    for (unsigned int i = 0; i < 3; ++i) {
      values.offsets[i] = parameters_.getRangeAngleOffset(i);
      values.scales[i] = parameters_.getRangeAngleScale(i);
      values.misalignment[i] = parameters_.getMisalignment(i);
      values.leverArm[i] = parameters_.getLeverArm(i);
    }
    return values;
  }

  fs::path parameterFile(const std::string& beginning) const {
    return configuration_.RootPath / configuration_.getPrameterPath() /
           (beginning + configuration_.FileSuffix);
  }

  const AdjustmentJob& job_;
  InputParameter configuration_;
  Velorn::FileContainer files_;
  Velorn::Trajectory trajectory_;
  Velorn::SolverParameters parameters_;
};

}  // namespace

void checkJob(const AdjustmentJob& job) {
  std::map<std::string, fs::path> names;
  for (const auto& strip : job.strips) {
    requireFile(strip);
    const auto [same, isNew] = names.emplace(strip.filename().string(), strip);
    if (!isNew) {
      throw Error(
          fmt::format("{} and {}: two strips of one name", same->second.string(), strip.string()));
    }
  }
  requireFile(job.groundTruth);
  for (const auto& file : job.trajectories) {
    requireFile(file);
    if (file.string().find(',') == std::string::npos) continue;
    throw Error(file.string() + ": the name of a trajectory must not hold a comma");
  }
  std::error_code fault;
  if (!fs::is_directory(job.correspondences, fault)) {
    throw Error(job.correspondences.string() + ": no such folder of correspondences");
  }
  if (fs::exists(job.correspondences / unfinishedName, fault)) {
    throw Error(job.correspondences.string() +
                ": the matching that writes it was not finished; match again");
  }
}

void requireConvergence(const Velorn::SolverEnd& end, const std::string& whenOutOfSteps) {
  if (end.isConvergence()) return;
  const bool outOfSteps = end.termination == "NO_CONVERGENCE";
  throw Error(fmt::format("the solver ended with {}: {}; the unknowns are not to be used{}",
                          end.termination, end.message, outOfSteps ? "; " + whenOutOfSteps : ""),
              outOfSteps ? Error::NoConvergence : Error::SolverFailed);
}

AdjustmentOutcome adjust(const AdjustmentJob& job,
                         const std::shared_ptr<Kestrum::LoaderProgress>& progress) {
  Adjustment adjustment(job, progress);
  adjustment.prepare();
  return adjustment.run();
}

}  // namespace Velorn::Flights
