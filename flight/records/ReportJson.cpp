// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/records/ReportJson.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "platform/geomra/Degree.h"

namespace Velorn::Flights {

namespace {

using Geomra::degreesPerRadian;

constexpr std::array<const char*, 5> classNames{"ground_truth", "roof", "slope", "bed", "flat"};

Json number(double value) {
  return std::isfinite(value) ? Json(value) : Json();
}

Json perClass(const PerClass& counts) {
  Json json;
  for (std::size_t i = 0; i < counts.size(); ++i) json[classNames[i]] = counts[i];
  return json;
}

Json funnelOf(const Funnel& funnel) {
  return {{"candidates", funnel.candidates},
          {"too_far", funnel.tooFar},
          {"angle", funnel.angle},
          {"roughness", funnel.roughness},
          {"outlier", funnel.outlier},
          {"thinned", funnel.thinned},
          {"kept", funnel.kept},
          {"median", number(funnel.median)},
          {"nmad", number(funnel.nmad)}};
}

Json pairOf(const PairReport& pair) {
  Json json{{"i", pair.i}, {"j", pair.j}, {"ground_truth", pair.isGroundTruth}};
  for (std::size_t i = 0; i < pair.classes.size(); ++i) {
    if (pair.classes[i].candidates > 0) json["classes"][classNames[i]] = funnelOf(pair.classes[i]);
  }
  return json;
}

Json fitOf(const OrvekStatistic::Summary& fit) {
  return {{"count", fit.moments.count},      {"mean", number(fit.moments.mean)},
          {"rms", number(fit.moments.rms)},  {"median", number(fit.median)},
          {"nmad", number(fit.nmad)},        {"q05", number(fit.quantiles[0])},
          {"q25", number(fit.quantiles[1])}, {"q75", number(fit.quantiles[2])},
          {"q95", number(fit.quantiles[3])}};
}

Json phaseOf(const Velorn::PhaseFigures& phase) {
  return {{"pairs", fitOf(phase.pairs)}, {"ground_truth", fitOf(phase.groundTruth)}};
}

Json threeOf(const Globals::Three& values, std::array<double, 3> factors) {
  return {values[0] * factors[0], values[1] * factors[1], values[2] * factors[2]};
}

Json globalsOf(const Globals& globals) {
  return {{"offsets", threeOf(globals.offsets, {1.0, degreesPerRadian, degreesPerRadian})},
          {"scales", threeOf(globals.scales, {1.0, 1.0, 1.0})},
          {"misalignment",
           threeOf(globals.misalignment, {degreesPerRadian, degreesPerRadian, degreesPerRadian})},
          {"lever_arm", threeOf(globals.leverArm, {1.0, 1.0, 1.0})}};
}

Json solverOf(const Velorn::SolverEnd& end) {
  return {{"termination", end.termination},
          {"message", end.message},
          {"initial_cost", number(end.initialCost)},
          {"final_cost", number(end.finalCost)},
          {"steps", end.successfulSteps},
          {"seconds", end.seconds},
          {"residuals", end.residuals},
          {"unknowns", end.parameters},
          {"estimated", end.estimated}};
}

Json heldSectionsOf(const AdjustmentOutcome& outcome) {
  Json held = Json::array();
  for (const auto& section : outcome.result.sections) {
    if (!section.isConstant()) continue;
    held.push_back({{"strip", outcome.strips.at(section.strip)},
                    {"section", section.section},
                    {"correspondences", section.correspondences},
                    {"too_few", section.isLow},
                    {"locked", section.isLocked}});
  }
  return held;
}

Json movementsOf(const AdjustmentOutcome& outcome) {
  Json strips = Json::array();
  const auto& movements = outcome.result.after.movements;
  for (std::size_t i = 0; i < movements.size() && i < outcome.strips.size(); ++i) {
    strips.push_back({{"strip", outcome.strips[i]},
                      {"horizontal_q90", movements[i].horizontal90},
                      {"vertical_q90", movements[i].vertical90}});
  }
  return strips;
}

std::size_t keptOf(const Json& pair) {
  std::size_t kept = 0;
  if (!pair.contains("classes")) return kept;
  for (const auto& funnel : pair["classes"]) kept += funnel["kept"].get<std::size_t>();
  return kept;
}

/// Which strips hang together by correspondences, and whether any of them has ground truth.
struct Part {
  std::set<std::uint32_t> strips;
  bool isControlled = false;
};

std::vector<Part> partsOf(const Json& matching) {
  std::vector<Part> parts;
  for (const auto& pair : matching["pairs"]) {
    if (keptOf(pair) == 0) continue;
    Part joined;
    joined.strips.insert(pair["i"].get<std::uint32_t>());
    joined.isControlled = pair["ground_truth"].get<bool>();
    if (!joined.isControlled) joined.strips.insert(pair["j"].get<std::uint32_t>());
    std::erase_if(parts, [&](const Part& part) {
      const bool meets = std::ranges::any_of(
          part.strips, [&](std::uint32_t strip) { return joined.strips.contains(strip); });
      if (!meets) return false;
      joined.strips.insert(part.strips.begin(), part.strips.end());
      joined.isControlled = joined.isControlled || part.isControlled;
      return true;
    });
    parts.push_back(std::move(joined));
  }
  return parts;
}

}  // namespace

Json reportOf(const RasterCounts& counts) {
  return {{"points", counts.points},
          {"not_finite", counts.notFinite},
          {"not_last_echo", counts.notLast},
          {"not_planar", counts.notPlanar},
          {"no_terrain", counts.notTerrain},
          {"not_selected", counts.notSelected},
          {"surface", perClass(counts.surface)},
          {"representatives", perClass(counts.representatives)},
          {"median_roughness", counts.medianRoughness}};
}

Json reportOf(const MatchReport& matching) {
  Json pairs = Json::array();
  for (const auto& pair : matching.pairs) pairs.push_back(pairOf(pair));
  return {{"search_radius", matching.searchRadius},
          {"max_correspondences", matching.maxCorrespondences},
          {"correspondences", matching.correspondences},
          {"with_ground_truth", matching.withGroundTruth},
          {"on_inclined_ground_truth", matching.onInclinedGroundTruth},
          {"ground_truth_patches", matching.groundTruthPatches},
          {"typical_distance", number(matching.typicalDistance)},
          {"disagreement", number(matching.disagreement)},
          {"pairs", pairs}};
}

Json reportOf(const AdjustmentOutcome& outcome) {
  const auto& result = outcome.result;
  Json classes;
  for (std::size_t i = 0; i < result.correspondencesPerClass.size() && i < classNames.size(); ++i) {
    classes[classNames[i]] = result.correspondencesPerClass[i];
  }
  return {{"correspondences", classes},
          {"before", phaseOf(result.before)},
          {"after", phaseOf(result.after)},
          {"globals", globalsOf(outcome.globals)},
          {"held_sections", heldSectionsOf(outcome)},
          {"movements", movementsOf(outcome)},
          {"solver", solverOf(result.end)},
          {"files",
           {{"sections", outcome.files.sections.string()},
            {"parameters", outcome.files.parameters.string()},
            {"strip_ids", outcome.files.stripIds.string()}}}};
}

Json datumOf(const Json& matching, const Velorn::InputParameter& configuration, bool isRelative,
             double sectionLength) {
  Json fixedBy = Json::array(), warnings = Json::array();
  const auto control = matching["with_ground_truth"].get<std::size_t>();
  const auto inclined = matching["on_inclined_ground_truth"].get<std::size_t>();
  const double weight = configuration.CellSizeWeights.front();
  if (control > 0) {
    fixedBy.push_back(fmt::format(
        "{} correspondences with {} patches of ground truth, {} of them on slopes of more than "
        "10 degrees; weight {}",
        control, matching["ground_truth_patches"].get<std::size_t>(), inclined, weight));
  }
  if (!configuration.LockedStrips.empty()) {
    fixedBy.push_back(fmt::format("the delivered trajectory of the locked strips {}",
                                  fmt::join(configuration.LockedStrips, ", ")));
  }
  if (isRelative && control == 0) {
    if (configuration.LockedStrips.empty()) {
      fixedBy.push_back("the delivered trajectory, on average");
    }
    warnings.push_back(
        "No ground truth: nothing controls position, height, tilt and scale of the block.");
  }
  const auto parts = partsOf(matching);
  for (const auto& part : parts) {
    if (parts.size() < 2 || part.isControlled) continue;
    warnings.push_back(fmt::format(
        "The strips {} hang together with no other ones and with no ground truth: nothing controls "
        "where they lie.",
        fmt::join(part.strips, ", ")));
  }
  constexpr double fewestInclined = 0.1;
  if (control > 0 &&
      static_cast<double>(inclined) < fewestInclined * static_cast<double>(control)) {
    warnings.push_back(
        "Nearly all ground truth is flat: it controls heights; horizontal position and scale of "
        "the block are hardly controlled.");
  }
  const bool isFree = configuration.TypeModel == "LINEAR" || configuration.TypeModel == "SPLINE";
  if (isFree && control > 0 && weight < 3.0 && configuration.LockedStrips.empty()) {
    warnings.push_back(fmt::format(
        "{} sections with weight {} of the ground truth: the noise of the pairs may shrink the "
        "block; weights of 3 to 5 prevent that.",
        configuration.TypeModel, weight));
  }
  constexpr double shortest = 8.0;
  if (isFree && sectionLength < shortest) {
    warnings.push_back(fmt::format(
        "{} sections of {:.1f} s: a trajectory hardly drifts in so short a time, and the noise of "
        "the pairs takes the drifts' place; BIAS prevents that.",
        configuration.TypeModel, sectionLength));
  }
  return {{"fixed_by", fixedBy}, {"warnings", warnings}};
}

}  // namespace Velorn::Flights
