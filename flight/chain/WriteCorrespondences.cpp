// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "flight/chain/DoneRounds.h"
#include "flight/chain/RoundWork.h"
#include "flight/chain/RunContext.h"
#include "flight/chain/ScratchFolder.h"
#include "flight/matching/CorrespondenceRows.h"
#include "flight/records/FolderLock.h"
#include "flight/records/RunState.h"
#include "flight/report/CorrespondenceTable.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/strips/OutputPlaces.h"
#include "flight/strips/Threads.h"
#include "flight/surfaces/Rasterize.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/WriteCorrespondences.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

FlightSettings settingsOf(FlightSettings settings, const RunState& state) {
  settings.steps.clear();
  for (const char* word : {"+correspondences", "+optimization"}) {
    if (state.steps.find(word) != std::string::npos) settings.steps.emplace_back(word);
  }
  const bool hasMatched = std::ranges::count(settings.steps, "+correspondences") > 0;
  if (!hasMatched) {
    throw Error(fmt::format("{}: the last run there did \"{}\" and matched nothing",
                            rootOf(settings).string(), state.steps));
  }
  settings.force = false;
  complete(settings);
  check(settings.configuration());
  return settings;
}

/// The one that is wished, or the last.
DoneRound chosen(DoneRounds done, unsigned int wish, const RunContext& run, const RunState& state) {
  const auto& root = run.folder.root();
  auto& rounds = done.rounds;
  const bool isWhole = done.missing.empty() || state.phase != RunState::Phase::finished ||
                       rounds.size() >= run.folder.readSummary().rounds.size();
  if (rounds.empty() || (wish == 0 && !isWhole)) throw Error(done.missing);
  if (wish == 0) return std::move(rounds.back());
  for (DoneRound& one : rounds) {
    if (one.round.number == wish) return std::move(one);
  }
  throw Error(fmt::format("{}: there is no round {}; there are the rounds 1 to {}{}{}",
                          root.string(), wish, rounds.size(), isWhole ? "" : ". ",
                          isWhole ? "" : done.missing));
}

/// One round on its way into a file.
class CorrespondencesOfRound {
 public:
  CorrespondencesOfRound(RunContext& run, RoundWork& work, DoneRound done)
      : run_(run), work_(work), done_(std::move(done)) {}

  WrittenCorrespondences writeTo(const fs::path& target) {
    written_.file = target;
    written_.round = done_.round.number;
    const auto adjusted = modelAfter();
    std::optional<Solution> solution;
    if (adjusted) solution.emplace(Solution{*adjusted, run_.trajectory});
    written_.isAdjusted = solution.has_value();
    const auto table = correspondenceTable(target, run_.trajectory.getEpsgSpatial());
    const ScratchFolder scratch(run_.folder.status() / "correspondences");
    const auto report = work_.matchAgain(done_.round, scratch.path(), [&](const MatchedPair& pair) {
      add(rowsOf(pair, solution ? &*solution : nullptr, run_.configuration().InterpolationFlag),
          *table);
    });
    requireSame(report);
    table->finish();
    return written_;
  }

 private:
  std::shared_ptr<const Velorn::SolverParameters> modelAfter() const {
    const auto& adjustment = done_.report.adjustment;
    if (!adjustment || !adjustment->solver.isConvergence()) return nullptr;
    return work_.parametersOf({adjustment->files, {}});
  }

  void add(const std::vector<CorrespondenceRow>& rows, CorrespondenceTable& table) {
    for (const CorrespondenceRow& row : rows) {
      ++written_.counts.at(static_cast<std::size_t>(row.fate));
    }
    table.add(rows);
  }

  /// A matching that can be told from the run's is none of it.
  void requireSame(const MatchReport& report) const {
    const auto& before = *done_.report.matching;
    if (report.correspondences == before.correspondences &&
        report.withGroundTruth == before.withGroundTruth) {
      return;
    }
    throw Error(
        fmt::format("{}: round {} had {} correspondences, and has {} when it is matched "
                    "again; run again",
                    run_.folder.root().string(), done_.round.number, before.correspondences,
                    report.correspondences));
  }

  RunContext& run_;
  RoundWork& work_;
  DoneRound done_;
  WrittenCorrespondences written_;
};

WrittenCorrespondences written(const FlightSettings& settings, const CorrespondenceWish& wish,
                               const RunState& state, const Watch& watch) {
  const LoopThreads threads(settings.threads);
  RunContext run(settings, watch);
  RoundWork work(run);
  DoneRound done = chosen(doneRounds(run, work), wish.round, run, state);
  const auto target =
      wish.output.empty()
          ? run.folder.root() / fmt::format("correspondences_round{}.las", done.round.number)
          : wish.output;
  refuseExisting(target, wish.overwrite);
  return CorrespondencesOfRound(run, work, std::move(done)).writeTo(target);
}

}  // namespace

WrittenCorrespondences writeCorrespondences(FlightSettings settings, const CorrespondenceWish& wish,
                                            const Watch& watch) {
  const fs::path root = rootOf(settings);
  if (!wish.output.empty()) refuseExisting(wish.output, wish.overwrite);
  RunState::in(root);
  const FolderLock lock(root);
  const RunState state = RunState::in(root);
  return withMemoryFor(root.string(), [&] {
    return written(settingsOf(std::move(settings), state), wish, state, watch);
  });
}

}  // namespace Velorn::Flights
