// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <chrono>
#include <optional>
#include <system_error>

#include <fmt/format.h>

#include "flight/chain/AdjustedStrips.h"
#include "flight/chain/ControlFit.h"
#include "flight/chain/Datum.h"
#include "flight/chain/PeakMemory.h"
#include "flight/chain/PriorFindings.h"
#include "flight/chain/Rasterizing.h"
#include "flight/chain/RoundWork.h"
#include "flight/chain/RunRecording.h"
#include "flight/chain/Stability.h"
#include "flight/chain/Sufficiency.h"
#include "flight/matching/SolverMemory.h"
#include "flight/strips/Threads.h"
#include "flight/surfaces/Rasterize.h"
#include "platform/plome/AvailableMemory.h"
#include <velorn/flight/Adjust.h>
#include <velorn/flight/Error.h>
#include <velorn/flight/Flight.h>

namespace Velorn::Flights {
namespace {

constexpr const char* whenOutOfSteps =
    "raise iterations, or with many short sections raise interval";

FlightSettings completed(FlightSettings settings) {
  complete(settings);
  check(settings.configuration());
  return settings;
}

/// The same settings with other steps.
FlightSettings withSteps(FlightSettings settings, std::vector<std::string> steps) {
  settings.steps = std::move(steps);
  settings.configuration().Options =
      Plome::FlagList(fmt::format("{}", fmt::join(settings.steps, " ")), ' ');
  return settings;
}

}  // namespace

class Flight::Chain {
 public:
  Chain(FlightSettings settings, Watch watch)
      : watch_(std::move(watch)), context_(completed(std::move(settings)), watch_) {}

  const RunContext& context() const { return context_; }
  const RunReport& report() const { return report_; }
  const FlightSettings& settings() const { return context_.settings; }

  /// Does some of the steps; the summary and the state of the root folder tell how it ended.
  void run(const std::vector<std::string>& steps) {
    const LoopThreads threads(settings().threads);
    const auto all = settings().steps;
    context_.settings = withSteps(context_.settings, steps);
    begin_ = std::chrono::steady_clock::now();
    report_ = {};
    report_.program = VELORN_VERSION;
    report_.steps = context_.configuration().Options.text();
    report_.root = context_.folder.root();
    report_.strips = context_.strips;
    report_.scale = context_.scale;
    try {
      requireMemory();
      RunRecording recording(context_.folder.root(), report_.steps, *context_.watcher);
      recording.during([&](RunState& state) {
        doSteps();
        writeSummary();
        if (report_.adjustment) requireConvergence(report_.adjustment->solver, whenOutOfSteps);
        state.model = report_.model;
        state.strips = context_.files.getStripFiles();
        state.trajectories = context_.files.getTrajectories();
        state.isGeoreferenced = report_.georeferencing.has_value();
        return true;
      });
    } catch (...) {
      context_.settings = withSteps(context_.settings, all);
      throw;
    }
    context_.settings = withSteps(context_.settings, all);
  }

  const GeoreferencingReport& georeference() {
    if (!model_) {
      throw Error(
          "georeference: this flight has no adjusted model yet; adjust() or run() makes one",
          Error::BadSettings);
    }
    const LoopThreads threads(settings().threads);
    RunRecording recording(context_.folder.root(), "+adjustment", *context_.watcher);
    recording.during([&](RunState& state) {
      report_.georeferencing = georeferenceAll(context_, *model_, watch_);
      writeSummary();
      state.model = context_.folder.fromRoot(model_->files);
      state.strips = context_.files.getStripFiles();
      state.trajectories = context_.files.getTrajectories();
      state.isGeoreferenced = true;
      return true;
    });
    return *report_.georeferencing;
  }

 private:
  /// Before anything is done.
  void requireMemory() const {
    if (!context_.does("+optimization")) return;
    const auto evaluation = solverSettingsOf(settings().model).evaluation;
    const auto available = Plome::availableMemory();
    if (context_.does("+correspondences")) {
      requireSolverMemory(settings().match, context_.strips.size(), evaluation, available);
    } else {
      requireSolverMemory(context_.folder.blocks(), evaluation, available);
    }
  }

  /// What the steps find is in the report also when a later one throws.
  void doSteps() {
    try {
      if (context_.does("+rasterize")) report_.rasterizing = rasterizeAll(context_);
      doRounds();
      context_.surfaces.forgetAll();
      if (context_.does("+adjustment") && model_) {
        report_.georeferencing = georeferenceAll(context_, *model_, watch_);
      } else {
        tellOfEarlierStrips();
      }
    } catch (const std::exception& error) {
      report_.failure = error.what();
      writeSummaryOfFailure();
      throw;
    }
  }

  void doRounds() {
    const bool matches = context_.does("+correspondences"),
               adjusts = context_.does("+optimization");
    if (!matches && !adjusts) return;
    RoundsResult rounds;
    RoundWork work(context_);
    try {
      runRounds(roundPlanOf(context_), work, rounds);
    } catch (...) {
      addRounds(rounds);
      context_.surfaces.forgetAll();
      throw;
    }
    addRounds(rounds);
    if (matches && adjusts && settings().stability) testStability(work);
  }

  void testStability(RoundWork& work) {
    const auto& last = lastThatCounts(report_.rounds);
    if (!model_ || !last.matching || last.isCoarse()) return;
    StepKey key("stability");
    key.add("model", model_->digest);
    const StepRecord record = context_.folder.record("stability");
    if (!settings().force) report_.stability = record.valid<StabilityReport>(key);
    if (!report_.stability) {
      record.begin();
      std::optional<SurfaceStore> views;
      if (std::ranges::any_of(report_.rounds, &RoundReport::isCoarse)) {
        views = work.seenAnew(*model_);
      }
      report_.stability = stabilityOf(context_, views ? *views : context_.surfaces, last);
      record.finish(key, {}, *report_.stability);
    }
    const auto more = warningsOf(*report_.stability);
    report_.datum->warnings.insert(report_.datum->warnings.end(), more.begin(), more.end());
  }

  /// What the last round found stands by itself, so that nobody has to look for it.
  void addRounds(const RoundsResult& rounds) {
    report_.apart = rounds.apart;
    report_.rounds = rounds.reports;
    report_.roundsEnd = rounds.end;
    if (context_.does("+optimization")) model_ = rounds.model;
    if (rounds.model) report_.model = context_.folder.fromRoot(rounds.model->files);
    if (rounds.reports.empty()) return;
    const auto& last = lastThatCounts(rounds.reports);
    report_.adjustment = last.adjustment;
    if (!last.matching) return;
    report_.datum = datumOf(*last.matching, settings(), context_.strips);
    auto& warnings = report_.datum->warnings;
    warnings.insert(warnings.end(), rounds.warnings.begin(), rounds.warnings.end());
    if (report_.adjustment && settings().model.prior.isUsed) {
      const auto more = surprises(*report_.adjustment, knowledgeFor(context_));
      warnings.insert(warnings.end(), more.begin(), more.end());
      auto known = knownBefore(*report_.adjustment);
      if (!known.empty()) report_.datum->fixedBy.push_back(std::move(known));
    }
    addControlWarnings(rounds.reports, settings().configuration().TypeModel, *report_.datum);
    addSufficiencyWarnings(last, context_.strips, settings().configuration().LockedStrips,
                           *report_.datum);
  }

  static const RoundReport& lastThatCounts(const std::vector<RoundReport>& rounds) {
    const auto last = std::find_if(rounds.rbegin(), rounds.rend(),
                                   [](const RoundReport& round) { return !round.isTakenBack; });
    return last == rounds.rend() ? rounds.back() : *last;
  }

  void tellOfEarlierStrips() const {
    std::error_code fault;
    const auto folder = context_.folder.adjusted();
    if (!std::filesystem::exists(folder, fault)) return;
    context_.tell(fmt::format("{}: its strips are those of an earlier run", folder.string()));
  }

  void writeSummary() {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin_;
    report_.seconds = elapsed.count();
    report_.peakMemory = peakMemory();
    context_.folder.writeSummary(report_, textOf(report_));
  }

  /// Leaves no summary of an earlier run beside the results of this one, and hides no fault of the
  /// steps behind one of its own.
  void writeSummaryOfFailure() {
    try {
      writeSummary();
    } catch (const Error& second) {
      context_.tell(second.what());
    }
  }

  Watch watch_;
  RunContext context_;
  RunReport report_;
  std::optional<RoundModel> model_;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

Flight::Flight(FlightSettings settings, Watch watch)
    : chain_(std::make_unique<Chain>(std::move(settings), std::move(watch))) {}

Flight::~Flight() = default;
Flight::Flight(Flight&& other) noexcept = default;
Flight& Flight::operator=(Flight&& other) noexcept = default;

const FlightSettings& Flight::settings() const {
  return chain_->settings();
}

const std::vector<StripFacts>& Flight::strips() const {
  return chain_->context().strips;
}

const RunReport& Flight::run() {
  chain_->run(chain_->settings().steps);
  return chain_->report();
}

const RasterizingReport& Flight::rasterize() {
  chain_->run({"+rasterize"});
  return *chain_->report().rasterizing;
}

const MatchReport& Flight::match() {
  chain_->run({"+correspondences"});
  return *chain_->report().rounds.back().matching;
}

const AdjustmentReport& Flight::adjust() {
  chain_->run({"+optimization"});
  return *chain_->report().adjustment;
}

const GeoreferencingReport& Flight::georeference() {
  return chain_->georeference();
}

const RunReport& Flight::report() const {
  return chain_->report();
}

}  // namespace Velorn::Flights
