// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/Match.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "flight/matching/BlockFolder.h"
#include "flight/matching/ControlTally.h"
#include "flight/matching/ControlWeights.h"
#include "flight/matching/GroundTruth.h"
#include "flight/matching/MatchPlan.h"
#include "flight/matching/PairSearch.h"
#include "flight/matching/Rejection.h"
#include "flight/matching/SampledSquares.h"
#include "flight/matching/SupportTally.h"
#include "flight/matching/Thinning.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/surfaces/SearchPlaces.h"
#include "platform/geomra/Degree.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

using Geomra::degree;

constexpr unsigned int timeBins = 16;

/// The correspondences of one pair, from found to written.
struct Found {
  std::vector<Correspondence> pairs;
  CandidateTally tally;
};

/// Class, slope, aspect and time of each correspondence as one number.
std::vector<std::uint64_t> strataOf(const Found& found, const MatchPoints& pointsOfI) {
  std::vector<std::uint64_t> strata;
  if (found.pairs.empty()) return strata;
  const auto timeOf = [&](const Correspondence& pair) { return pointsOfI.times[pair.i]; };
  const auto [first, last] =
      std::minmax_element(found.pairs.begin(), found.pairs.end(),
                          [&](const auto& a, const auto& b) { return timeOf(a) < timeOf(b); });
  const double begin = timeOf(*first), length = timeOf(*last) - begin;
  for (const Correspondence& pair : found.pairs) {
    const double part = length > 0.0 ? (timeOf(pair) - begin) / length : 0.0;
    const auto bin =
        std::min(static_cast<std::uint64_t>(timeBins * part), timeBins - std::uint64_t{1});
    strata.push_back(timeBins * stratumOf(pair.code, pair.normalI) + bin);
  }
  return strata;
}

/// Keeps as many as there is room for.
void thin(Found& found, const std::vector<std::uint64_t>& strata, std::size_t room,
          std::uint64_t seed) {
  const auto numbers = thinned(strata, room, seed);
  std::size_t kept = 0;
  for (std::size_t k = 0; k < found.pairs.size(); ++k) {
    const bool isKept = kept < numbers.size() && numbers[kept] == k;
    found.tally.judge(found.pairs[k], isKept ? Fate::kept : Fate::thinned);
    if (isKept) found.pairs[kept++] = found.pairs[k];
  }
  found.pairs.resize(kept);
}

/// The record of a point that was moved onto its plane.
Velorn::SphericalBeing moved(const MatchPoints& points, std::size_t k, double shift,
                             const vector& normal, std::uint8_t code) {
  auto being = shifted(points.being(k), shift);
  being.normal = normal;
  being.classification = code;
  return being;
}

/// A block with the ground truth, until the weights of its patches are known.
struct KnownBlock {
  BlockTitle title;
  std::vector<BlockEntry> entries;
  std::vector<std::uint32_t> items;  // of each entry
};

/// Goes through the strips; of the partners of a strip J no more than one is looked at.
class Matcher {
 public:
  Matcher(const Velorn::InputParameter& configuration, const MatchOptions& options,
          const Solution* solution, SurfaceStore& surfaces, const GroundTruth& groundTruth,
          const MatchPlan& plan, const BlockFolder& folder, Kestrum::LoaderProgress& progress,
          const PairObserver& observe)
      : configuration_(configuration),
        surfaces_(surfaces),
        options_(options),
        solution_(solution),
        groundTruth_(groundTruth),
        plan_(plan),
        folder_(folder),
        progress_(progress),
        observe_(observe),
        rules_{configuration.SearchRadius, std::cos(configuration.ThresholdMaxAngle * degree),
               options.ontoPlanes,         options.neighbours,
               options.neighbourRadius,    options.areFarApart,
               options.mostNeighbours,     options.roughest},
        reach_(std::max(configuration.SearchRadius, options.reach)),
        controlReach_(std::max(configuration.SearchRadius, options.controlReach)),
        part_(options.oneSquareOf, options.seed),
        total_(plan.candidates()),
        control_(groundTruth),
        support_(surfaces.size()) {}

  MatchReport run() {
    for (std::uint32_t j = 0; j < surfaces_.size(); ++j) {
      withMemoryFor(surfaces_.files(j).planar.string(), [&] { matchStrip(j); });
    }
    std::sort(report_.pairs.begin(), report_.pairs.end(), [](const auto& a, const auto& b) {
      return std::tie(a.isGroundTruth, a.i, a.j) < std::tie(b.isGroundTruth, b.i, b.j);
    });
    report_.searchRadius = rules_.radius;
    report_.maxCorrespondences = plan_.maxCorrespondences;
    report_.support = support_.strips();
    report_.typicalDistance = spreadOf(std::move(distances_)).median;
    report_.disagreement = spreadOf(std::move(disagreements_)).median;
    addControl();
    return std::move(report_);
  }

 private:
  /// All pairs whose second strip is J, and J with the ground truth.
  void matchStrip(std::uint32_t j) {
    std::vector<PlannedPair> pairs = plan_.pairs, known = plan_.known;
    std::erase_if(pairs, [j](const PlannedPair& pair) { return pair.j != j; });
    std::erase_if(known, [j](const PlannedPair& pair) { return pair.i != j; });
    if (pairs.empty() && known.empty()) return;
    const MatchPoints points = pointsOf(j, pairs, !known.empty());
    const PartnerSearch search(points, rules_);
    for (const PlannedPair& pair : pairs) matchPair(pair, search);
    for (const PlannedPair& pair : known) matchGroundTruth(pair, search);
  }

  /// The strip's points where partners may be searched, and those that their planes go through.
  MatchPoints pointsOf(std::uint32_t j, const std::vector<PlannedPair>& pairs, bool isKnown) {
    const double reach = reach_ + rules_.neighbourRadius,
                 controlReach = std::max(reach_, controlReach_) + rules_.neighbourRadius;
    MatchPoints points = surfaces_.planar(j, [&](const point& place) {
      const bool isOverlap = part_.isNear(place, reach) &&
                             std::any_of(pairs.begin(), pairs.end(), [&](const auto& pair) {
                               return plan_.hulls[pair.i].holds(place, reach);
                             });
      return isOverlap || (isKnown && groundTruth_.isNear(place, controlReach));
    });
    georeference(surfaces_.files(j).planar, j, points);
    return points;
  }

  void georeference(const std::filesystem::path& file, std::uint32_t strip, MatchPoints& points) {
    searchWith(solution_, file, strip, configuration_.InterpolationFlag, points);
  }

  void matchPair(const PlannedPair& pair, const PartnerSearch& search) {
    MatchPoints candidates = surfaces_.raster(pair.i, [&](const point& place) {
      return part_.holds(place) && plan_.hulls[pair.j].holds(place, reach_);
    });
    georeference(surfaces_.files(pair.i).raster, pair.i, candidates);
    Found found{{}, tally()};
    found.pairs =
        searchPartners(candidates, search, found.tally, [this](std::size_t k) { tell(k); });
    done_ += pair.candidates;
    rejectUnlike(found.pairs, found.tally,
                 options_.areFarApart ? Alike::ofDirection : Alike::ofClass);
    thin(found, strataOf(found, candidates), pair.room, derivedSeed(options_.seed, pair.i, pair.j));
    for (const Correspondence& one : found.pairs) {
      distances_.push_back(lengthOf(search.points().places()[one.j] - candidates.places()[one.i]));
      disagreements_.push_back(std::abs(one.distance));
    }
    write(pair, found, candidates, search.points());
    observe({pair.i, pair.j, surfaces_, candidates, &search.points(), groundTruth_},
            std::move(found.tally));
  }

  void write(const PlannedPair& pair, const Found& found, const MatchPoints& pointsOfI,
             const MatchPoints& pointsOfJ) {
    std::vector<BlockEntry> entries;
    for (const Correspondence& one : found.pairs) {
      entries.push_back({moved(pointsOfI, one.i, one.shiftI, one.normalI, one.code),
                         moved(pointsOfJ, one.j, one.shiftJ, one.normalJ, one.code)});
      support_.add(pair.i, pointsOfI.times[one.i], one.normalI);
      support_.add(pair.j, pointsOfJ.times[one.j], one.normalI);
    }
    folder_.write({pair.i, pair.j, false, pointsOfI.week, pointsOfJ.week}, entries);
    report_.pairs.push_back({pair.i, pair.j, false, found.tally.funnels()});
    report_.correspondences += entries.size();
  }

  /// Nothing is left out for its distance: control that does not fit is a finding.
  void matchGroundTruth(const PlannedPair& pair, const PartnerSearch& search) {
    Found found{{}, tally()};
    found.pairs = searchGroundTruth(search, groundTruth_, controlReach_, found.tally, control_,
                                    [this](std::size_t) { tell(0); });
    auto before = found.pairs;
    rejectRough(found.pairs, found.tally);
    control_.countGone(before, found.pairs, &ControlItem::rough);
    before = found.pairs;
    leaveOtherSurfaces(found.pairs, groundTruth_, found.tally);
    control_.countGone(before, found.pairs, &ControlItem::otherSurface);
    before = found.pairs;
    std::vector<std::uint64_t> patches;
    for (const Correspondence& one : found.pairs) patches.push_back(groundTruth_.patchOf(one.j));
    thin(found, patches, pair.room, derivedSeed(options_.seed, pair.i, pair.j));
    control_.countGone(before, found.pairs, &ControlItem::thinned);
    control_.add(found.pairs);
    keepKnown(pair, found, search.points());
    observe({pair.i, pair.j, surfaces_, search.points(), nullptr, groundTruth_},
            std::move(found.tally));
  }

  void keepKnown(const PlannedPair& pair, const Found& found, const MatchPoints& points) {
    const KnownPoints& known = groundTruth_.points();
    KnownBlock block{{pair.i, pair.j, true, points.week, 0}, {}, {}};
    for (const Correspondence& one : found.pairs) {
      block.items.push_back(groundTruth_.patchOf(one.j));
      block.entries.push_back(
          {moved(points, one.i, one.shiftI, one.normalI, one.code),
           {known.places[one.j], {}, 0.0, one.normalJ, {}, known.codes[one.j]}});
      support_.add(pair.i, points.times[one.i], one.normalI);
    }
    report_.pairs.push_back({pair.i, pair.j, true, found.tally.funnels()});
    report_.correspondences += block.entries.size();
    report_.withGroundTruth += block.entries.size();
    known_.push_back(std::move(block));
  }

  /// The length of the normal is the weight of a patch: the residual is a multiple of it.
  void addControl() {
    report_.control = control_.items();
    if (options_.weighsControl) weigh(report_.control, report_.disagreement);
    for (KnownBlock& block : known_) {
      for (std::size_t k = 0; k < block.entries.size(); ++k) {
        vector& normal = block.entries[k].i.normal;
        normal = report_.control[block.items[k]].weight * normal;
      }
      folder_.write(block.title, block.entries);
    }
    for (const ControlItem& item : report_.control) {
      report_.groundTruthPatches += item.correspondences > 0 ? 1 : 0;
      report_.onInclinedGroundTruth += item.isInclined ? item.correspondences : 0;
    }
  }

  CandidateTally tally() const { return CandidateTally(observe_ != nullptr); }

  void observe(MatchedPair pair, CandidateTally tally) const {
    if (!observe_) return;
    pair.candidates = std::move(tally).judged();
    observe_(pair);
  }

  void tell(std::size_t inPair) { progress_.report("matching", done_ + inPair, total_); }

  const Velorn::InputParameter& configuration_;
  SurfaceStore& surfaces_;
  const MatchOptions& options_;
  const Solution* solution_;
  const GroundTruth& groundTruth_;
  const MatchPlan& plan_;
  const BlockFolder& folder_;
  Kestrum::LoaderProgress& progress_;
  const PairObserver& observe_;
  SearchRules rules_;
  double reach_, controlReach_;
  SampledSquares part_;
  std::size_t done_ = 0, total_;
  MatchReport report_;
  std::vector<double> distances_, disagreements_;  // of the strip pairs kept
  ControlTally control_;
  std::vector<KnownBlock> known_;
  SupportTally support_;
};

}  // namespace

MatchReport match(const Velorn::InputParameter& configuration, SurfaceStore& surfaces,
                  const MatchOptions& options, const Solution* solution,
                  Kestrum::LoaderProgress& progress, const PairObserver& observe) {
  surfaces.requireFiles();
  const GroundTruth groundTruth(surfaces.knownPoints());
  const MatchPlan plan = planOf(configuration, surfaces, options, groundTruth);
  const BlockFolder folder(configuration.RootPath / configuration.getCorrespondencePath(),
                           configuration.Storage);
  MatchReport report = Matcher(configuration, options, solution, surfaces, groundTruth, plan,
                               folder, progress, observe)
                           .run();
  folder.finish();
  return report;
}

}  // namespace Velorn::Flights
