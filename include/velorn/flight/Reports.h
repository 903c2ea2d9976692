// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What the steps of a run found. Lengths are metres and angles degrees; a figure that is not known
// is NaN. docs/run.md describes the same as summary.json.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <velorn/AdjustmentResult.h>
#include <velorn/flight/Visibility.h>

namespace Velorn::Flights {

inline constexpr double unknownFigure = std::numeric_limits<double>::quiet_NaN();

/// Points or correspondences by class: ground truth, roof, slope, bed points, flat.
using PerClass = std::array<std::size_t, 5>;

/// Bounds of points [m]; of no use where a coordinate is no number.
struct Box {
  std::array<double, 3> low{}, high{};
};

/// What a strip's container says without its points being read.
struct StripFacts {
  std::uint32_t id = 0;  ///< file id, its place in the list of strips
  std::filesystem::path file;
  std::size_t points = 0;
  std::uint32_t week = 0;          ///< GPS week
  double first = 0.0, last = 0.0;  ///< time [s of week]
  Box box;
  double farthestForward = 0.0;  ///< largest amount of a forward scanner coordinate [m]
};

/// Where the points of a strip went.
struct RasterCounts {
  std::size_t points = 0;
  std::size_t notFinite = 0;     ///< a coordinate or the time is not finite
  std::size_t notFirst = 0;      ///< another point stands for its cube
  std::size_t notLast = 0;       ///< an echo that is not the last of its pulse
  std::size_t notPlanar = 0;     ///< no plane through the neighbours, or a rough one
  std::size_t notTerrain = 0;    ///< vegetation, water, noise and the like by the file's classes
  std::size_t notSelected = 0;   ///< by the selection or the amplitude limits
  PerClass surface{};            ///< the rest: planar points of each class
  PerClass representatives{};    ///< of these, those in the raster
  double medianRoughness = 0.0;  ///< of the planar points [m]; 0 without any
};

/// Of one strip, or the ground truth.
struct RasterReport {
  std::string name;        ///< of the file
  bool isSkipped = false;  ///< an earlier run had done it
  RasterCounts counts;
};

struct RasterizingReport {
  std::vector<RasterReport> strips;
  RasterReport groundTruth;
  double seconds = 0.0;
};

/// How far one strip lies from another, as delivered: the place of J minus that of I, to about
/// three times the distance of the points.
struct PairShift {
  std::uint32_t i = 0, j = 0;     ///< file ids
  std::array<double, 3> shift{};  ///< east, north, up [m]
  std::size_t cells = 0;          ///< of the two surfaces that were compared

  double length() const { return std::hypot(shift[0], shift[1], shift[2]); }
};

struct ApartReport {
  double spacing = unknownFigure;  ///< distance of neighbouring points of the strips [m]
  std::vector<PairShift> pairs;    ///< with enough surface in common
  double control = unknownFigure;  ///< median height of ground truth above the strips [m]
  unsigned int coarseRounds = 0;   ///< that followed from it

  /// Null without pairs.
  const PairShift* farthestPair() const {
    const auto farthest = std::max_element(
        pairs.begin(), pairs.end(),
        [](const PairShift& a, const PairShift& b) { return a.length() < b.length(); });
    return farthest == pairs.end() ? nullptr : &*farthest;
  }
  /// 0 without pairs [m].
  double farthest() const { return farthestPair() ? farthestPair()->length() : 0.0; }
};

/// Where the candidates of one class went.
struct Funnel {
  std::size_t candidates = 0;     ///< representatives within the other's bounding polygon
  std::size_t tooFar = 0;         ///< nothing of the class within the search radius
  std::size_t angle = 0;          ///< normals disagree
  std::size_t roughness = 0;      ///< one of the two neighbourhoods is no plane, or a rough one
  std::size_t outlier = 0;        ///< distance along the normal beyond median ± 3 NMAD; of the
                                  ///< ground truth: far off the other points at the same item
  std::size_t thinned = 0;        ///< given up for the sake of memory
  std::size_t kept = 0;           ///< correspondences
  double median = unknownFigure;  ///< distance along the normal [m]
  double nmad = unknownFigure;    ///< before the rejection [m]

  /// Of the counts; median and NMAD become NaN.
  Funnel& operator+=(const Funnel& other) {
    candidates += other.candidates;
    tooFar += other.tooFar;
    angle += other.angle;
    roughness += other.roughness;
    outlier += other.outlier;
    thinned += other.thinned;
    kept += other.kept;
    median = nmad = unknownFigure;
    return *this;
  }
};

/// Two strips, or a strip and the ground truth, whose bounding polygons overlap.
struct PairReport {
  std::uint32_t i = 0, j = 0;  ///< file ids
  bool isGroundTruth = false;
  std::array<Funnel, 5> classes;  ///< ground truth, roof, slope, bed points, flat

  Funnel sum() const {
    Funnel sum;
    for (const Funnel& one : classes) sum += one;
    return sum;
  }
};

/// A patch of the ground truth, or a single point of it: evidence, which no size of its misfit
/// takes away.
struct ControlItem {
  std::uint32_t id = 0;             ///< from 0, in the order of the ground truth's file
  std::array<double, 3> place{};    ///< middle of its points: easting, northing, height [m]
  std::size_t points = 0;           ///< of the ground truth
  bool isInclined = false;          ///< by more than 10°
  std::size_t strips = 0;           ///< with a correspondence
  std::size_t correspondences = 0;  ///< kept
  std::size_t beside = 0;           ///< points of strips near it that lie beside it
  std::size_t turnedAway = 0;       ///< on planes with another normal
  std::size_t rough = 0;            ///< without a plane, or with a rough one
  std::size_t otherSurface = 0;     ///< far off the other points of the strip at this item
  std::size_t thinned = 0;          ///< given up for the sake of memory
  double misfit = unknownFigure;    ///< median of n · (Q − P) as searched [m]
  double weight = 1.0;              ///< of its residuals, beside that of the class
  std::string leftOut;              ///< why it has no correspondence; empty: it has
};

/// How the correspondences of a strip lie, those with the ground truth among them.
struct StripSupport {
  std::uint32_t strip = 0;  ///< file id
  std::size_t correspondences = 0;
  double first = unknownFigure, last = unknownFigure;  ///< 5 and 95 % quantile of times [s of week]
  /// Least eigenvalue of the sum of h h^T over the horizontal parts h of the normals on slopes of
  /// more than 10°: the number of vertical walls that look in the direction looked at least.
  double weakestAspect = 0.0;
};

struct MatchReport {
  std::vector<PairReport> pairs;       ///< by i and j, the ground truth last
  double searchRadius = 0.0;           ///< of this round [m]
  std::size_t maxCorrespondences = 0;  ///< that were allowed
  std::size_t correspondences = 0;     ///< in all blocks
  std::size_t withGroundTruth = 0;     ///< of these
  /// Median of the distances of the strip pairs kept [m].
  double typicalDistance = unknownFigure;
  /// Median of their absolute distances along the normal, as searched [m].
  double disagreement = unknownFigure;
  /// Ground-truth correspondences on planes of more than 10°.
  std::size_t onInclinedGroundTruth = 0;
  std::size_t groundTruthPatches = 0;  ///< groups of ground-truth points that were matched
  std::vector<ControlItem> control;    ///< all of the ground truth
  std::vector<StripSupport> support;   ///< of all strips, by id
};

/// Distances of points from the planes of their correspondences [m].
struct Fit {
  std::size_t count = 0;
  double mean = unknownFigure, rms = unknownFigure, median = unknownFigure, nmad = unknownFigure,
         q05 = unknownFigure, q25 = unknownFigure, q75 = unknownFigure, q95 = unknownFigure;
};

struct FitReport {
  Fit pairs, groundTruth;
};

/// The corrections that all strips share.
struct GlobalCorrections {
  using Three = std::array<double, 3>;
  Three offsets{};       ///< of range and two angles: [m], [degree], [degree]
  Three scales{};        ///< of the same, as deviations from one
  Three misalignment{};  ///< about the body's axes [degree]
  Three leverArm{};      ///< body axes [m]
};

/// A sum of corrections that a user reads, with its standard deviation.
struct EstimatedSum {
  std::string name, unit;
  double value = unknownFigure, sigma = unknownFigure;
};

/// What a group of observations, or of what is known before, was weighed with.
struct DeviationReport {
  std::string name;
  std::string unit;  ///< empty: in units of what was expected
  double expected = 0.0, sigma = 0.0;
  std::size_t count = 0;      ///< observations or degrees of freedom
  double designEffect = 1.0;  ///< so many neighbours are worth one
  double redundancy = 0.0;
  bool isEstimated = false;  ///< otherwise as expected
};

/// A section whose unknowns were held constant.
struct HeldSection {
  std::string strip;
  std::size_t section = 0, correspondences = 0;
  bool isLow = false;     ///< too few correspondences
  bool isLocked = false;  ///< its strip is locked
};

/// How far an adjustment moved the points of a strip, 90 % quantiles [m].
struct StripMovement {
  std::string strip;
  double horizontal = 0.0, vertical = 0.0;
};

/// How well an adjustment fits an item of the ground truth: medians of n · (Q − P) over its
/// correspondences in all strips.
struct ControlMisfit {
  std::uint32_t id = 0;  ///< as in `ControlItem`
  std::size_t correspondences = 0;
  double before = unknownFigure, after = unknownFigure;  ///< as delivered, and adjusted [m]
};

/// What determines the unknowns of a strip.
struct StripRedundancy {
  std::string strip;
  std::size_t correspondences = 0, unknowns = 0;  ///< those estimated
};

/// The three files of an adjusted model.
struct ModelFiles {
  std::filesystem::path sections, parameters, stripIds;

  bool operator==(const ModelFiles&) const = default;
};

struct AdjustmentReport {
  PerClass correspondences{};
  FitReport before, after;  ///< as delivered, and adjusted
  GlobalCorrections globals;
  /// Standard deviations of the same, and the shares of what was known before in them; only where
  /// something was.
  /// @{
  std::optional<GlobalCorrections> globalSigmas, globalPriorShares;
  std::vector<EstimatedSum> sums;
  std::vector<DeviationReport> deviations;
  /// @}
  std::vector<HeldSection> heldSections;
  std::vector<StripMovement> movements;
  /// 95 % quantile of how far this adjustment moved the points of a strip from where it began, of
  /// the strip that moved most [m]: what rounds end by.
  double moved = unknownFigure;
  /// The same, by the change of one of the global corrections alone, of the one that would move a
  /// point at the median range most [m].
  double movedByOne = unknownFigure;
  std::vector<StripRedundancy> redundancy;  ///< of all strips
  std::vector<ControlMisfit> control;       ///< empty where the patches are not known
  Velorn::SolverEnd solver;
  ModelFiles files;  ///< of the adjusted model; complete only after convergence
};

/// What the points of all strips are like, and the lengths that a run works with [m].
struct ScaleReport {
  double spacing = unknownFigure;  ///< of the sparsest strip's neighbouring points
  double noise = unknownFigure;    ///< along the normals of planes
  double cell = 0.0;               ///< smallest of the raster
  double searchRadius = 0.0, neighbourRadius = 0.0, maxRoughness = 0.0;
  unsigned int neighbours = 0, mostNeighbours = 0;
};

/// One round of matching and adjusting.
struct RoundReport {
  unsigned int number = 1;
  double scale = 1.0;  ///< above 1: a coarse round, so many times the distance of the points
  bool isSkipped = false;
  /// Ground truth fits much worse than before the round, whose model is not used.
  bool isTakenBack = false;
  std::optional<MatchReport> matching;
  std::optional<AdjustmentReport> adjustment;

  bool isCoarse() const { return scale > 1.0; }
};

/// A sum of corrections that a user reads, and what other starts give for it.
struct StableSum {
  std::string name, unit;
  double value = unknownFigure;
  double low = unknownFigure, high = unknownFigure;  ///< of all starts
};

/// How far results of searches that began beside the result lie apart.
struct StabilityReport {
  double length = 0.0;  ///< that each start was turned and shifted by [m]
  std::size_t starts = 0, failed = 0;
  double bestFit = unknownFigure, worstFit = unknownFigure;  ///< RMS of the pairs among them [m]
  std::vector<StableSum> sums;
  /// 95 % quantile of the distances between points by the first start and by another [m].
  double points = unknownFigure;
};

/// What fixes the block in space, and what nothing controls.
struct DatumReport {
  std::vector<std::string> fixedBy, warnings;
};

struct GeoreferencingReport {
  std::filesystem::path folder;
  std::size_t strips = 0, points = 0;
  std::vector<std::string> unknown;  ///< strips, by name, that the adjustment did not know
  bool isSkipped = false;
  double seconds = 0.0;
};

/// All of a run.
struct RunReport {
  std::string program;         ///< its version
  std::string steps;           ///< the option words
  std::filesystem::path root;  ///< folder of the results
  std::vector<StripFacts> strips;
  std::optional<ScaleReport> scale;  ///< none where every length was given
  std::optional<RasterizingReport> rasterizing;
  std::optional<ApartReport> apart;  ///< where the run decided on coarse rounds by itself
  std::vector<RoundReport> rounds;
  std::string roundsEnd;                       ///< why no other round was done
  std::optional<AdjustmentReport> adjustment;  ///< of the last round
  std::optional<ModelFiles> model;  ///< adjusted, as seen from the root; none without convergence
  std::optional<StabilityReport> stability;
  std::optional<DatumReport> datum;
  std::optional<GeoreferencingReport> georeferencing;
  std::string failure;  ///< empty: none
  double seconds = 0.0;
  std::uint64_t peakMemory = 0;  ///< [byte]
};

/// Tables for people.
/// @{
VELORN_FLIGHT_EXPORT std::string textOf(const RunReport& run);
VELORN_FLIGHT_EXPORT std::string textOf(const ScaleReport& scale);
VELORN_FLIGHT_EXPORT std::string textOf(const AdjustmentReport& adjustment, bool isControlled);
/// @}

/// "302410.123 to 302415.456 s of week 2318".
VELORN_FLIGHT_EXPORT std::string timesText(double first, double last, std::int64_t week);

}  // namespace Velorn::Flights
