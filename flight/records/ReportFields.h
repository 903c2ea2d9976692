// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The names of all values of a report, once for both directions. A visitor is called with a name
// and a value; `unless` leaves a value out where it is the standard one, which it is where the name
// is missing.
#pragma once

#include <concepts>
#include <limits>
#include <string>
#include <type_traits>

#include "flight/surfaces/StripScale.h"
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// A report that is written (const) or read.
template <typename T, typename Report>
concept Of = std::same_as<std::remove_const_t<T>, Report>;

/// A list that summaries of this version may lack.
void addedLater(auto& visit, const char* name, auto& list) {
  if (!list.empty() || visit.has(name)) visit(name, list);
}

void fields(auto& visit, Of<StripFacts> auto& strip) {
  visit("id", strip.id);
  visit("file", strip.file);
  visit("points", strip.points);
  visit("week", strip.week);
  visit("first_time", strip.first);
  visit("last_time", strip.last);
  visit("farthest_forward", strip.farthestForward);
}

void fields(auto& visit, Of<RasterCounts> auto& counts) {
  visit("points", counts.points);
  visit("not_finite", counts.notFinite);
  visit("not_last_echo", counts.notLast);
  visit("not_planar", counts.notPlanar);
  visit("no_terrain", counts.notTerrain);
  visit("not_selected", counts.notSelected);
  visit("surface", counts.surface);
  visit("representatives", counts.representatives);
  visit("median_roughness", counts.medianRoughness);
}

void fields(auto& visit, Of<RasterReport> auto& raster) {
  visit("name", raster.name);
  visit("skipped", raster.isSkipped);
  fields(visit, raster.counts);
}

void fields(auto& visit, Of<RasterizingReport> auto& rasterizing) {
  visit("strips", rasterizing.strips);
  visit("ground_truth", rasterizing.groundTruth);
  visit("seconds", rasterizing.seconds);
}

void fields(auto& visit, Of<Funnel> auto& funnel) {
  visit("candidates", funnel.candidates);
  visit("too_far", funnel.tooFar);
  visit("angle", funnel.angle);
  visit("roughness", funnel.roughness);
  visit("outlier", funnel.outlier);
  visit("thinned", funnel.thinned);
  visit("kept", funnel.kept);
  visit("median", funnel.median);
  visit("nmad", funnel.nmad);
}

void fields(auto& visit, Of<PairReport> auto& pair) {
  visit("i", pair.i);
  visit("j", pair.j);
  visit("ground_truth", pair.isGroundTruth);
  visit("classes", pair.classes);
}

void fields(auto& visit, Of<PairShift> auto& pair) {
  visit("i", pair.i);
  visit("j", pair.j);
  visit("shift", pair.shift);
  visit("cells", pair.cells);
}

void fields(auto& visit, Of<ApartReport> auto& apart) {
  visit("spacing", apart.spacing);
  visit("pairs", apart.pairs);
  visit("control", apart.control);
  visit("coarse_rounds", apart.coarseRounds);
}

void fields(auto& visit, Of<ControlItem> auto& item) {
  visit("id", item.id);
  visit("place", item.place);
  visit("points", item.points);
  visit("inclined", item.isInclined);
  visit("strips", item.strips);
  visit("correspondences", item.correspondences);
  visit("beside", item.beside);
  visit("turned_away", item.turnedAway);
  visit("rough", item.rough);
  visit("other_surface", item.otherSurface);
  visit("thinned", item.thinned);
  visit("misfit", item.misfit);
  visit("weight", item.weight);
  visit.unless("left_out", item.leftOut, std::string());
}

void fields(auto& visit, Of<StripSupport> auto& support) {
  visit("strip", support.strip);
  visit("correspondences", support.correspondences);
  visit("first_time", support.first);
  visit("last_time", support.last);
  visit("weakest_aspect", support.weakestAspect);
}

void fields(auto& visit, Of<MatchReport> auto& matching) {
  visit("search_radius", matching.searchRadius);
  visit("max_correspondences", matching.maxCorrespondences);
  visit("correspondences", matching.correspondences);
  visit("with_ground_truth", matching.withGroundTruth);
  visit("on_inclined_ground_truth", matching.onInclinedGroundTruth);
  visit("ground_truth_patches", matching.groundTruthPatches);
  visit("typical_distance", matching.typicalDistance);
  visit("disagreement", matching.disagreement);
  addedLater(visit, "control", matching.control);
  addedLater(visit, "support", matching.support);
  visit("pairs", matching.pairs);
}

void fields(auto& visit, Of<Fit> auto& fit) {
  visit("count", fit.count);
  visit("mean", fit.mean);
  visit("rms", fit.rms);
  visit("median", fit.median);
  visit("nmad", fit.nmad);
  visit("q05", fit.q05);
  visit("q25", fit.q25);
  visit("q75", fit.q75);
  visit("q95", fit.q95);
}

void fields(auto& visit, Of<FitReport> auto& fit) {
  visit("pairs", fit.pairs);
  visit("ground_truth", fit.groundTruth);
}

void fields(auto& visit, Of<GlobalCorrections> auto& globals) {
  visit("offsets", globals.offsets);
  visit("scales", globals.scales);
  visit("misalignment", globals.misalignment);
  visit("lever_arm", globals.leverArm);
}

void fields(auto& visit, Of<EstimatedSum> auto& sum) {
  visit("name", sum.name);
  visit("unit", sum.unit);
  visit("value", sum.value);
  visit("sigma", sum.sigma);
}

void fields(auto& visit, Of<DeviationReport> auto& group) {
  visit("name", group.name);
  visit("unit", group.unit);
  visit("expected", group.expected);
  visit("sigma", group.sigma);
  visit("count", group.count);
  visit("design_effect", group.designEffect);
  visit("redundancy", group.redundancy);
  visit("estimated", group.isEstimated);
}

void fields(auto& visit, Of<HeldSection> auto& held) {
  visit("strip", held.strip);
  visit("section", held.section);
  visit("correspondences", held.correspondences);
  visit("too_few", held.isLow);
  visit("locked", held.isLocked);
}

void fields(auto& visit, Of<StripMovement> auto& movement) {
  visit("strip", movement.strip);
  visit("horizontal_q90", movement.horizontal);
  visit("vertical_q90", movement.vertical);
}

void fields(auto& visit, Of<ControlMisfit> auto& item) {
  visit("id", item.id);
  visit("correspondences", item.correspondences);
  visit("before", item.before);
  visit("after", item.after);
}

void fields(auto& visit, Of<StripRedundancy> auto& strip) {
  visit("strip", strip.strip);
  visit("correspondences", strip.correspondences);
  visit("unknowns", strip.unknowns);
}

void fields(auto& visit, Of<Velorn::SolverEnd> auto& end) {
  visit("termination", end.termination);
  visit("message", end.message);
  visit("initial_cost", end.initialCost);
  visit("final_cost", end.finalCost);
  visit("steps", end.successfulSteps);
  visit("seconds", end.seconds);
  visit("residuals", end.residuals);
  visit("unknowns", end.parameters);
  visit("estimated", end.estimated);
}

void fields(auto& visit, Of<ModelFiles> auto& files) {
  visit("sections", files.sections);
  visit("parameters", files.parameters);
  visit("strip_ids", files.stripIds);
}

void fields(auto& visit, Of<AdjustmentReport> auto& adjustment) {
  visit("correspondences", adjustment.correspondences);
  visit("before", adjustment.before);
  visit("after", adjustment.after);
  visit("globals", adjustment.globals);
  visit("global_sigmas", adjustment.globalSigmas);
  visit("global_prior_shares", adjustment.globalPriorShares);
  addedLater(visit, "sums", adjustment.sums);
  addedLater(visit, "standard_deviations", adjustment.deviations);
  visit("held_sections", adjustment.heldSections);
  visit("movements", adjustment.movements);
  visit.unless("moved", adjustment.moved, unknownFigure);
  visit.unless("moved_by_one", adjustment.movedByOne, unknownFigure);
  addedLater(visit, "redundancy", adjustment.redundancy);
  addedLater(visit, "control", adjustment.control);
  visit("solver", adjustment.solver);
  visit.unless("files", adjustment.files, ModelFiles());
}

void fields(auto& visit, Of<RoundReport> auto& round) {
  visit("round", round.number);
  visit.unless("scale", round.scale, 1.0);
  visit("matching", round.matching);
  visit("adjustment", round.adjustment);
  visit.unless("skipped", round.isSkipped, false);
  visit.unless("taken_back", round.isTakenBack, false);
}

void fields(auto& visit, Of<StableSum> auto& sum) {
  visit("name", sum.name);
  visit("unit", sum.unit);
  visit("value", sum.value);
  visit("low", sum.low);
  visit("high", sum.high);
}

void fields(auto& visit, Of<StabilityReport> auto& stability) {
  visit("length", stability.length);
  visit("starts", stability.starts);
  visit("failed", stability.failed);
  visit("best_fit", stability.bestFit);
  visit("worst_fit", stability.worstFit);
  visit("sums", stability.sums);
  visit("points", stability.points);
}

void fields(auto& visit, Of<DatumReport> auto& datum) {
  visit("fixed_by", datum.fixedBy);
  visit("warnings", datum.warnings);
}

void fields(auto& visit, Of<GeoreferencingReport> auto& georeferencing) {
  visit("folder", georeferencing.folder);
  visit("strips", georeferencing.strips);
  visit("points", georeferencing.points);
  visit("seconds", georeferencing.seconds);
  visit("skipped", georeferencing.isSkipped);
}

void fields(auto& visit, Of<StripScale> auto& scale) {
  visit("spacing", scale.spacing);
  visit("noise", scale.noise);
  visit("points", scale.points);
}

void fields(auto& visit, Of<ScaleReport> auto& scale) {
  visit("spacing", scale.spacing);
  visit("noise", scale.noise);
  visit("cell", scale.cell);
  visit("search_radius", scale.searchRadius);
  visit("neighbour_radius", scale.neighbourRadius);
  visit("max_roughness", scale.maxRoughness);
  visit("neighbours", scale.neighbours);
  visit("most_neighbours", scale.mostNeighbours);
}

void fields(auto& visit, Of<RunReport> auto& run) {
  visit("program", run.program);
  visit("steps", run.steps);
  visit("root", run.root);
  visit("strips", run.strips);
  visit("scale", run.scale);
  visit("rasterize", run.rasterizing);
  visit("apart", run.apart);
  if (!run.rounds.empty() || visit.has("rounds")) visit("rounds", run.rounds);
  visit.unless("rounds_end", run.roundsEnd, std::string());
  visit("files", run.model);
  visit("adjustment", run.adjustment);
  visit("stability", run.stability);
  visit("datum", run.datum);
  visit("georeference", run.georeferencing);
  visit.unless("failure", run.failure, std::string());
  visit("seconds", run.seconds);
  visit("peak_memory", run.peakMemory);
}

}  // namespace Velorn::Flights
