// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/RoundRules.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include <fmt/format.h>

namespace Velorn::Flights {
namespace {

constexpr std::size_t fewestOfCoarse = 100;

std::string adjustmentLine(const RoundReport& round) {
  const auto& adjustment = *round.adjustment;
  const auto& end = adjustment.solver.termination;
  const double before = adjustment.before.pairs.rms, after = adjustment.after.pairs.rms;
  if (!std::isfinite(after)) return fmt::format("round {}: {}", round.number, end);
  const auto moved = std::isfinite(adjustment.moved)
                         ? fmt::format("; points moved by {:.2f} cm", 100.0 * adjustment.moved)
                         : std::string();
  return fmt::format("round {}: {}; pairs fit to {:.2f} cm, before {:.2f} cm{}{}", round.number,
                     end, 100.0 * after, 100.0 * before, moved,
                     round.isSkipped ? "; unchanged, skipped" : "");
}

/// Of ground truth, robust [m]; NaN for too little of it.
double misfitOf(const Fit& fit) {
  constexpr std::size_t fewest = 20;
  return fit.count < fewest ? std::nan("") : std::hypot(fit.median, fit.nmad);
}

class Rounds {
 public:
  Rounds(const RoundPlan& plan, RoundSteps& steps, RoundsResult& result)
      : steps_(steps),
        result_(result),
        matches_(plan.matches),
        adjusts_(plan.adjusts),
        both_(plan.matches && plan.adjusts),
        coarse_(both_ ? coarseOf(plan) : 0),
        most_(both_ ? coarse_ + plan.fine : 1),
        widest_(plan.widest),
        noise_(plan.noise),
        farthestControl_(std::max(plan.widest, controlApart())) {}

  void all() {
    Round round{1, widest_, farthestControl_, 1.0, coarse_ > 0, {}};
    for (; round.number <= most_; ++round.number) {
      round.scale = round.number > coarse_ ? 1.0 : std::exp2(0.5 * (coarse_ + 1 - round.number));
      round.start = result_.model;
      RoundReport report = one(round);
      takeBack(round, report);
      const bool isLast = isEnd(round, report);
      if (!report.isTakenBack && report.adjustment) control_ = report.adjustment->after.groundTruth;
      result_.reports.push_back(report);
      if (isLast) return;
      if (both_) setRadii(report, round);
    }
    tellOfLimit();
  }

 private:
  unsigned int coarseOf(const RoundPlan& plan) {
    if (plan.coarse) return *plan.coarse;
    result_.apart = steps_.apart();
    return result_.apart->coarseRounds = coarseRoundsFor(*result_.apart, plan.widest);
  }

  /// Strips that lie apart from each other lie apart from the ground truth, too.
  double controlApart() const {
    constexpr double more = 1.5;
    if (!result_.apart) return 0.0;
    const double up = result_.apart->control;
    return more * std::fmax(coarse_ > 0 ? result_.apart->farthest() : 0.0, std::abs(up));
  }

  /// A round that brought the strips together at the cost of the ground truth.
  void takeBack(const Round& round, RoundReport& report) {
    constexpr double much = 2.0;
    if (!report.adjustment || !result_.model) return;
    if (!round.start && !round.isCoarse()) return;  // nothing to go back to
    const auto& adjustment = *report.adjustment;
    const double now = misfitOf(adjustment.after.groundTruth),
                 before = misfitOf(control_ ? *control_ : adjustment.before.groundTruth);
    if (!(now > much * before && now - before > adjustment.after.pairs.rms)) return;
    report.isTakenBack = true;
    result_.model = round.start;
    result_.warnings.push_back(fmt::format(
        "Round {} was taken back: ground truth fits to {:.1f} cm after it, and to {:.1f} cm "
        "before.",
        round.number, 100.0 * now, 100.0 * before));
    steps_.tell(result_.warnings.back());
  }

  /// Says why, too.
  bool isEnd(const Round& round, const RoundReport& report) {
    if (report.adjustment && !report.isTakenBack && !result_.model) return true;  // has failed
    if (round.isCoarse()) return false;
    if (!report.adjustment) return true;
    if (report.isTakenBack) {
      result_.end = "the last round was taken back";
      return true;
    }
    if (!both_ || !isSettledBy(round, report)) return !both_;
    result_.end =
        fmt::format("points moved by {:.2f} mm in the last round{}", 1e3 * report.adjustment->moved,
                    isAtRest(*report.adjustment) ? "" : ", about as in the one before");
    return true;
  }

  void tellOfLimit() {
    if (!both_ || result_.reports.empty() || !result_.reports.back().adjustment) return;
    const auto& last = *result_.reports.back().adjustment;
    result_.end = fmt::format("{} rounds are the limit", most_ - coarse_);
    const auto alone =
        std::isfinite(last.movedByOne)
            ? fmt::format(" (one global correction alone: {:.1f} mm)", 1e3 * last.movedByOne)
            : std::string();
    result_.warnings.push_back(fmt::format(
        "The rounds ended at their limit of {}, and the last one moved points by {:.1f} "
        "mm{}: another round would change the result.",
        most_ - coarse_, 1e3 * last.moved, alone));
  }

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
    const bool isLast = !round.isCoarse() && (round.number == most_ || isSettledBy(round, done));
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
  void setRadii(const RoundReport& report, Round& round) const {
    round.radius = widest_;
    round.controlRadius = farthestControl_;
    if (!report.adjustment || report.isTakenBack) return;
    const double typical = report.matching->typicalDistance;
    const auto& fit = report.adjustment->after;
    if (std::isfinite(typical) && std::isfinite(fit.pairs.rms)) {
      round.radius = std::min(widest_, 3.0 * typical + 4.0 * fit.pairs.rms);
    }
    const double misfit = misfitOf(fit.groundTruth);
    if (!round.isCoarse() && std::isfinite(misfit)) {
      round.controlRadius =
          std::min(farthestControl_, std::max(widest_, round.radius + 4.0 * misfit));
    }
  }

  /// Standard deviation of a point along the normal of its surface [m]; the two of a pair have the
  /// same.
  double deviationOf(const AdjustmentReport& adjustment) const {
    const double ofPairs = adjustment.after.pairs.rms / std::numbers::sqrt2;
    return std::isfinite(noise_) ? std::fmax(noise_, ofPairs) : ofPairs;
  }

  /// Points that move by less stay where they are [m].
  double restOf(const AdjustmentReport& adjustment) const {
    constexpr double least = 1e-3, part = 0.1;
    return std::fmax(least, part * deviationOf(adjustment));
  }

  bool isAtRest(const AdjustmentReport& adjustment) const {
    return adjustment.moved <= restOf(adjustment);
  }

  /// Points that move within their noise, and not less than in the round before: each round finds
  /// other partners among the noise, and another one would do the same.
  bool wanders(const AdjustmentReport& adjustment) const {
    constexpr double less = 0.75, withinNoise = 0.5;
    if (result_.reports.empty() || result_.reports.back().isCoarse()) return false;
    const auto& before = result_.reports.back().adjustment;
    return before && adjustment.moved > less * before->moved &&
           adjustment.moved <= withinNoise * deviationOf(adjustment);
  }

  /// Whether nothing moves any more that another round would settle. The first round has nothing to
  /// be compared with.
  bool isSettledBy(const Round& round, const RoundReport& report) const {
    constexpr double creeping = 10.0;  // one correction against the others
    const auto& adjustment = *report.adjustment;
    return round.start && adjustment.movedByOne <= creeping * restOf(adjustment) &&
           (isAtRest(adjustment) || wanders(adjustment));
  }

  RoundSteps& steps_;
  RoundsResult& result_;
  bool matches_, adjusts_, both_;  // both: they take turns
  unsigned int coarse_, most_;
  double widest_, noise_, farthestControl_;
  std::optional<Fit> control_;  // after the last round that counts
};

}  // namespace

unsigned int coarseRoundsFor(const ApartReport& apart, double radius) {
  constexpr double nearEnough = 1.5;    // of the radius, beyond which most partners are missed
  constexpr double mostSpacings = 8.0;  // beyond which most nearest points are wrong ones
  constexpr double fewest = 2.0, most = 10.0;
  const double farthest = apart.farthest();
  if (!(farthest > std::min(nearEnough * radius, mostSpacings * apart.spacing))) return 0;
  const double scale = farthest / (spacingsSearched * apart.spacing);
  return static_cast<unsigned int>(std::clamp(std::ceil(2.0 * std::log2(scale)), fewest, most));
}

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
