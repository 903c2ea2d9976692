// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/RoundRules.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace Velorn::Flights {
namespace {

constexpr double smallestChange = 0.01;  // of the RMS of the pairs, from round to round
constexpr std::size_t fewestOfCoarse = 10;

std::string adjustmentLine(const RoundReport& round) {
  const auto& adjustment = *round.adjustment;
  const auto& end = adjustment.solver.termination;
  const double before = adjustment.before.pairs.rms, after = adjustment.after.pairs.rms;
  if (!std::isfinite(after)) return fmt::format("round {}: {}", round.number, end);
  return fmt::format("round {}: {}; pairs fit to {:.2f} cm, before {:.2f} cm{}", round.number, end,
                     100.0 * after, 100.0 * before, round.isSkipped ? "; unchanged, skipped" : "");
}

class Rounds {
 public:
  Rounds(const RoundPlan& plan, RoundSteps& steps, RoundsResult& result)
      : steps_(steps),
        result_(result),
        matches_(plan.matches),
        adjusts_(plan.adjusts),
        both_(plan.matches && plan.adjusts),
        coarse_(both_ ? plan.coarse : 0),
        most_(both_ ? coarse_ + plan.fine : 1),
        widest_(plan.widest) {}

  void all() {
    Round round{1, widest_, 1.0, {}};
    for (; round.number <= most_; ++round.number) {
      round.scale = round.number > coarse_ ? 1.0 : std::exp2(0.5 * (coarse_ + 1 - round.number));
      round.start = result_.model;
      const RoundReport report = one(round);
      const bool hasFailed = report.adjustment && !result_.model;
      const bool isLast =
          !round.isCoarse() && (!report.adjustment || !result_.model || isSettledBy(report));
      result_.reports.push_back(report);
      if (isLast || hasFailed) break;
      if (both_) round.radius = nextRadius(report);
    }
  }

 private:
  /// The matching of a round is looked at only when its adjustment has to be done, for the blocks
  /// of an earlier round are gone, and in the last round, so that the blocks belong to the model.
  RoundReport one(const Round& round) {
    if (adjusts_) {
      if (auto done = steps_.finished(round)) return taken(round, std::move(*done));
    }
    RoundReport report;
    report.number = round.number;
    report.scale = round.scale;
    if (matches_) {
      report.matching = steps_.match(round);
      if (isTooCoarse(round, *report.matching)) {
        steps_.keep(round, report);
        return report;
      }
    }
    if (adjusts_) adjust(round, report);
    return report;
  }

  /// A round that an earlier run has.
  RoundReport taken(const Round& round, RoundReport done) {
    done.isSkipped = true;
    if (!done.adjustment) {
      steps_.tell(matchingLine(round.number, *done.matching, true));
      return done;
    }
    const bool isLast = !round.isCoarse() && (round.number == most_ || isSettledBy(done));
    if (isLast && matches_) steps_.match(round);
    result_.model = RoundModel{done.adjustment->files, steps_.digestOf(round)};
    steps_.tell(adjustmentLine(done));
    return done;
  }

  void adjust(const Round& round, RoundReport& report) {
    const auto digest = steps_.digestOf(round);
    report.adjustment = steps_.adjust(round);
    steps_.tell(adjustmentLine(report));
    result_.model.reset();
    if (!report.adjustment->solver.isConvergence()) return;
    result_.model = RoundModel{report.adjustment->files, digest};
    steps_.keep(round, report);
  }

  /// A scene may have next to no planes of that size. Its finer ones may do.
  bool isTooCoarse(const Round& round, const MatchReport& matching) {
    const auto between = matching.correspondences - matching.withGroundTruth;
    if (!round.isCoarse() || between >= fewestOfCoarse) return false;
    steps_.tell(
        fmt::format("round {}: {} correspondences between strips are too few at {:.1f} "
                    "times the distance of the points; the next round is finer",
                    round.number, between, round.scale));
    return true;
  }

  /// From coarse to fine: what is left to search for is the distance of neighbouring points and the
  /// disagreement that the last adjustment left.
  double nextRadius(const RoundReport& round) const {
    if (!round.adjustment) return widest_;
    const double typical = round.matching->typicalDistance;
    const double rms = round.adjustment->after.pairs.rms;
    if (!std::isfinite(typical) || !std::isfinite(rms)) return widest_;
    return std::min(widest_, 3.0 * typical + 4.0 * rms);
  }

  /// Whether a round fits as well as the round before, which was no coarse one.
  bool isSettledBy(const RoundReport& report) const {
    if (result_.reports.size() <= coarse_ || !result_.reports.back().adjustment) return false;
    const double before = result_.reports.back().adjustment->after.pairs.rms;
    return std::abs(report.adjustment->after.pairs.rms - before) < smallestChange * before;
  }

  RoundSteps& steps_;
  RoundsResult& result_;
  bool matches_, adjusts_, both_;  // both: they take turns
  unsigned int coarse_, most_;
  double widest_;
};

}  // namespace

void runRounds(const RoundPlan& plan, RoundSteps& steps, RoundsResult& result) {
  Rounds(plan, steps, result).all();
}

std::string matchingLine(unsigned int round, const MatchReport& matching, bool isSkipped) {
  return fmt::format(
      "round {}: {} correspondences of {} pairs, {} with the ground truth, search radius {:.2f} "
      "m{}",
      round, matching.correspondences, matching.pairs.size(), matching.withGroundTruth,
      matching.searchRadius, isSkipped ? "; unchanged, skipped" : "");
}

}  // namespace Velorn::Flights
