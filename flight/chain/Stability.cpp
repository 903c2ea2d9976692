// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/Stability.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <fmt/format.h>

#include "flight/chain/Adjustment.h"
#include "flight/chain/PointMovement.h"
#include "flight/chain/ReadableSums.h"
#include "flight/chain/RoundWork.h"
#include "flight/chain/ScratchFolder.h"
#include "flight/matching/Match.h"

namespace Velorn::Flights {
namespace {

using Parameters = std::shared_ptr<const Velorn::SolverParameters>;

constexpr std::size_t starts = 4;
/// A flight with more is matched in part; in no smaller part than so, however dense its
/// correspondences are, as few squares leave strips without slopes that tell their place.
constexpr std::size_t enoughCorrespondences = 6000, smallestPart = 10;

/// Signs of the columns of a factorial design in as many runs as there are starts; a column further
/// on is a product of the first ones, so that strips do not all go the same way.
double signOf(std::size_t start, std::size_t column) {
  const bool first = (start & 1U) != 0, second = (start & 2U) != 0;
  switch (column % 4) {
    case 0:
      return first ? 1.0 : -1.0;
    case 1:
      return second ? 1.0 : -1.0;
    case 2:
      return first == second ? 1.0 : -1.0;
    default:
      return first != second ? 1.0 : -1.0;
  }
}

/// @param length  that each turn and shift moves a point by [m]
Disturbance disturbanceOf(std::size_t start, double length, const Reach& reach,
                          std::size_t strips) {
  Disturbance disturbance;
  disturbance.rotation = {signOf(start, 0) * length / reach.range,
                          signOf(start, 1) * length / reach.range,
                          signOf(start, 2) * length / reach.aside};
  for (std::size_t strip = 0; strip < strips; ++strip) {
    disturbance.shifts.push_back({signOf(start, strip) * length, signOf(start, strip + 1) * length,
                                  signOf(start, strip + 2) * length});
  }
  return disturbance;
}

class StabilityTest {
 public:
  StabilityTest(RunContext& run, SurfaceStore& surfaces, const RoundReport& last)
      : run_(run),
        surfaces_(surfaces),
        last_(last),
        adjusted_(restoredParameters(run, last.adjustment->files)),
        scratch_(run.folder.status() / "stability"),
        reach_(reachOf(run)) {
    part_ = static_cast<unsigned int>(std::clamp<std::size_t>(
        last.matching->correspondences / enoughCorrespondences, 1, smallestPart));
    constexpr double times = 3.0;
    length_ = times * last.adjustment->after.pairs.rms;
  }

  StabilityReport report() {
    StabilityReport report;
    report.length = length_;
    const auto sums = readableSums(*adjusted_, run_.strips, reach_.range);
    for (const auto& sum : sums) {
      report.sums.push_back({sum.name, sum.unit, valueOf(sum, *adjusted_)});
    }
    std::vector<Parameters> found;
    for (std::size_t start = 0; start < starts; ++start) {
      auto adjusted = from(start);
      if (!adjusted) continue;
      const double fit = adjusted->report.after.pairs.rms;
      report.bestFit = std::fmin(report.bestFit, fit);
      report.worstFit = std::fmax(report.worstFit, fit);
      found.push_back(std::move(adjusted->parameters));
    }
    report.starts = found.size();
    report.failed = starts - found.size();
    if (found.size() < 2) return report;
    for (std::size_t k = 0; k < report.sums.size(); ++k) {
      const auto [low, high] = rangeOf(found, sums[k]);
      report.sums[k].low = low;
      report.sums[k].high = high;
    }
    for (std::size_t k = 1; k < found.size(); ++k) {
      const Solution first{*found[0], run_.trajectory}, other{*found[k], run_.trajectory};
      report.points = std::fmax(report.points, movementOf(run_, &first, other).points);
    }
    return report;
  }

 private:
  static std::pair<double, double> rangeOf(const std::vector<Parameters>& found,
                                           const ReadableSum& sum) {
    double low = valueOf(sum, *found[0]), high = low;
    for (const auto& parameters : found) {
      const double value = valueOf(sum, *parameters);
      low = std::min(low, value);
      high = std::max(high, value);
    }
    return {low, high};
  }

  /// Two rounds, for what one does not reach is no other result.
  /// @return null where the start does not lead to a result
  std::optional<Adjusted> from(std::size_t start) {
    const Disturbance disturbance = disturbanceOf(start, length_, reach_, run_.strips.size());
    const Solution beside{*adjusted_, run_.trajectory, &disturbance};
    auto first = roundFrom(beside, last_.adjustment->files);
    if (!first) return {};
    const Solution there{*first->parameters, run_.trajectory};
    auto second = roundFrom(there, first->report.files);
    run_.tell(fmt::format(
        "stability: start {} of {}: {}", start + 1, starts,
        second ? fmt::format("pairs fit to {:.2f} cm", 100.0 * second->report.after.pairs.rms)
               : "no result"));
    return second;
  }

  std::optional<Adjusted> roundFrom(const Solution& solution, const ModelFiles& start) {
    constexpr std::size_t fewest = 100;
    Round round;
    round.number = ++rounds_;
    round.start = RoundModel{start, {}};
    auto input = adjustmentInputOf(run_, round);
    input.configuration.RootPath = scratch_.path();
    input.configuration.SearchRadius = last_.matching->searchRadius + 2.0 * length_;
    input.correspondences = scratch_.path() / input.configuration.getCorrespondencePath();
    input.settings.fewestGroundTruth = 0;
    input.settings.drawsPlots = false;
    input.mayBeScarce = true;
    MatchOptions options = matchOptionsOf(run_);
    options.oneSquareOf = part_;
    options.reach = reachOfOverlaps();
    options.controlReach = input.configuration.SearchRadius;
    options.weighsControl = true;
    const auto found = match(input.configuration, surfaces_, options, &solution, *run_.watcher);
    if (found.correspondences < fewest) return {};
    auto adjusted = adjustedBy(input, run_.trajectory, run_.watcher, true);
    if (!adjusted.report.solver.isConvergence()) return {};
    return adjusted;
  }

  double reachOfOverlaps() {
    const double moved = movementOf(run_, nullptr, {*adjusted_, run_.trajectory}).points;
    return last_.matching->searchRadius + (std::isfinite(moved) ? moved : 0.0);
  }

  RunContext& run_;
  SurfaceStore& surfaces_;
  const RoundReport& last_;
  Parameters adjusted_;
  ScratchFolder scratch_;
  Reach reach_;
  unsigned int part_ = 1, rounds_ = 0;
  double length_ = 0.0;
};

}  // namespace

StabilityReport stabilityOf(RunContext& run, SurfaceStore& surfaces, const RoundReport& last) {
  return StabilityTest(run, surfaces, last).report();
}

std::vector<std::string> warningsOf(const StabilityReport& stability) {
  constexpr double roll = 0.02, pitch = 0.05, yaw = 0.1, height = 0.01, points = 0.03;
  std::vector<std::string> warnings;
  const std::array<double, 4> claimed{roll, pitch, yaw, height};
  for (std::size_t k = 0; k < stability.sums.size() && k < claimed.size(); ++k) {
    const auto& sum = stability.sums[k];
    if (!(sum.high - sum.low > 2.0 * claimed[k])) continue;
    warnings.push_back(fmt::format(
        "The {} is not told by this flight: from starts beside the result it comes out between "
        "{:.3f} and {:.3f} {}, and pairs fit to {:.2f} to {:.2f} cm.",
        sum.name, sum.low, sum.high, sum.unit, 100.0 * stability.bestFit,
        100.0 * stability.worstFit));
  }
  if (stability.points > points) {
    warnings.push_back(
        fmt::format("Starts beside the result put points up to {:.1f} cm apart: where they lie "
                    "depends on luck.",
                    100.0 * stability.points));
  }
  if (stability.failed > 0) {
    warnings.push_back(fmt::format("{} of {} starts beside the result led to none.",
                                   stability.failed, stability.failed + stability.starts));
  }
  return warnings;
}

}  // namespace Velorn::Flights
