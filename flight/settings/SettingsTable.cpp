// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/settings/KnowledgeSettings.h"
#include <velorn/flight/SettingsTable.h>

namespace Velorn::Flights {
namespace {

constexpr const char* files = "Files";
constexpr const char* chain = "Chain";
constexpr const char* rasterizing = "Rasterize";
constexpr const char* matching = "Match";
constexpr const char* adjusting = "Adjust";
constexpr const char* working = "Work";
constexpr const char* hosts = "Of hosts";

constexpr const char* metres = "metres";
constexpr const char* degrees = "degrees";

using enum Step;

std::vector<Setting> filesAndChain() {
  return {
      {.name = "strips",
       .group = files,
       .sentence = "strip containers; * and ? stand for any letters and any letter",
       .placeholder = "FILE",
       .example = R"("strips/*.kx")",
       .delimiter = '\0',
       .isPath = true,
       .steps = {Rasterize, Match, Adjust, Georeference},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.strips; }},
      {.name = "trajectory",
       .group = files,
       .sentence = "trajectory containers",
       .placeholder = "FILE",
       .example = R"("trajectory.kx")",
       .delimiter = '\0',
       .isPath = true,
       .steps = {Adjust, Georeference},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.trajectories; }},
      {.name = "ground-truth",
       .group = files,
       .sentence = "ground-truth container",
       .placeholder = "FILE",
       .example = R"("ground_truth.kx")",
       .isPath = true,
       .steps = {Rasterize, Match, Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.groundTruth; }},
      {.name = "root",
       .group = files,
       .sentence = "folder of all results; it is made when it is missing",
       .placeholder = "FOLDER",
       .isPath = true,
       .place = [](FlightSettings& all) -> SettingPlace { return &all.configuration().RootPath; }},
      {.name = "name",
       .group = files,
       .sentence = "variant: results go into the folder of this name below the root, so that "
                   "several stand side by side; what they rasterize alike is there once",
       .placeholder = "VARIANT",
       .place = [](FlightSettings& all) -> SettingPlace { return &all.variant; }},
      {.name = "steps",
       .group = chain,
       .sentence = "what is done",
       .words = {"+rasterize", "+correspondences", "+optimization", "+adjustment"},
       .placeholder = "+WORD",
       .delimiter = ' ',
       .place = [](FlightSettings& all) -> SettingPlace { return &all.steps; }},
      {.name = "rounds",
       .group = chain,
       .sentence = "rounds of matching and adjusting, at most; they end early when points move by "
                   "less than a millimetre or a tenth of their standard deviation",
       .low = 1,
       .high = 20,
       .place = [](FlightSettings& all) -> SettingPlace { return &all.rounds; }},
      {.name = "coarse-rounds",
       .group = chain,
       .sentence =
           "rounds that come first when strips lie apart by many times the distance of their "
           "points, each finer than the one before; -1: as many as that distance asks for",
       .low = -1,
       .high = 10,
       .steps = {Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.coarseRounds; }},
      {.name = "stability",
       .group = chain,
       .sentence =
           "after the last round the search begins anew from four starts beside the result; "
           "what they do not agree about is told",
       .place = [](FlightSettings& all) -> SettingPlace { return &all.stability; }},
      {.name = "compress",
       .group = chain,
       .sentence = "deflate what is written into adjusted strips",
       .steps = {Georeference},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.compress; }}};
}

/// Matching takes all of them, too: rounds that go from coarse to fine rasterize the strips anew.
std::vector<Setting> ofRasterizing() {
  return {
      {.name = "min-cell-size",
       .group = rasterizing,
       .sentence = "smallest raster cell; 0: by the points",
       .unit = metres,
       .low = 0.01,
       .high = 1000,
       .followsPoints = true,
       .steps = {Rasterize, Match},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().MinCellSize;
       }},
      {.name = "cell-scalers",
       .group = rasterizing,
       .sentence = "cell sizes of ground truth, roof, slope, bed and flat in units of it",
       .low = 0.001,
       .high = 1e6,
       .entries = 5,
       .placeholder = "F,F,F,F,F",
       .steps = {Rasterize, Match},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().CellSizeScaler;
       }},
      {.name = "amplitude",
       .group = rasterizing,
       .sentence = "lowest amplitude of each class; -100: no limit",
       .low = -1e9,
       .high = 1e9,
       .entries = 5,
       .placeholder = "A,A,A,A,A",
       .steps = {Rasterize, Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.configuration().Amplitude; }},
      {.name = "selection",
       .group = rasterizing,
       .sentence = "expression over field names that a point must fulfil, such as \"Amplitude > 20 "
                   "and not PointSourceID == 3\"",
       .placeholder = "EXPRESSION",
       .example = R"("Amplitude > 20 and not PointSourceID == 3")",
       .steps = {Rasterize, Match},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().SelectionStr;
       }},
      {.name = "neighbours",
       .group = rasterizing,
       .sentence = "points that a plane is fitted to, at least",
       .low = 6,
       .high = 200,
       .steps = {Rasterize, Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.raster.neighbours; }},
      {.name = "most-neighbours",
       .group = rasterizing,
       .sentence = "points of a plane whose normal fewer do not tell to 1.25 degrees; no more than "
                   "neighbours: all planes have as many",
       .low = 0,
       .high = 2000,
       .steps = {Rasterize, Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.raster.mostNeighbours; }},
      {.name = "neighbour-radius",
       .group = rasterizing,
       .sentence = "distance within which they lie; 0: by the points",
       .unit = metres,
       .low = 0.01,
       .high = 1000,
       .followsPoints = true,
       .steps = {Rasterize, Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.raster.neighbourRadius; }},
      {.name = "max-roughness",
       .group = rasterizing,
       .sentence =
           "standard deviation from the plane of a planar neighbourhood; 0: 2.5 times the noise of "
           "the points",
       .unit = metres,
       .low = 1e-6,
       .high = 1000,
       .followsPoints = true,
       .steps = {Rasterize, Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.raster.maxRoughness; }},
      {.name = "slope-limit",
       .group = rasterizing,
       .sentence = "ground that is steeper is a slope",
       .unit = degrees,
       .high = 90,
       .steps = {Rasterize, Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.raster.slopeLimit; }}};
}

/// Adjusting names none of them: it follows by the correspondences.
std::vector<Setting> ofMatching() {
  return {
      {.name = "search-radius",
       .group = matching,
       .sentence =
           "distance within which the partner of a point is sought, 0: by the points; later rounds "
           "take less",
       .unit = metres,
       .low = 0.01,
       .high = 1000,
       .followsPoints = true,
       .steps = {Match},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().SearchRadius;
       }},
      {.name = "max-angle",
       .group = matching,
       .sentence = "largest angle between the normals of a correspondence",
       .unit = degrees,
       .high = 90,
       .steps = {Match},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().ThresholdMaxAngle;
       }},
      {.name = "max-correspondences",
       .group = matching,
       .sentence = "correspondences of all strips, at most; 0: 30,000 per strip; the solver takes "
                   "400 bytes for each",
       .high = 1e12,
       .steps = {Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.match.maxCorrespondences; }},
      {.name = "seed",
       .group = matching,
       .sentence = "seed of the thinning",
       .high = 9e15,
       .steps = {Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.match.seed; }},
      {.name = "onto-planes",
       .group = matching,
       .sentence = "points of correspondences are moved along their beams onto the planes of their "
                   "neighbourhoods",
       .steps = {Match},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.match.ontoPlanes; }}};
}

std::vector<Setting> ofAdjusting() {
  return {
      {.name = "model",
       .group = adjusting,
       .sentence = "correction of the trajectory per section",
       .words = {"BIAS", "LINEAR", "SPLINE", "HYBRID"},
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.configuration().TypeModel; }},
      {.name = "interval",
       .group = adjusting,
       .sentence = "longest section; 0: the whole strip, or 10 s with priors",
       .unit = "seconds",
       .high = 1e6,
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.model.interval; }},
      {.name = "iterations",
       .group = adjusting,
       .sentence = "limit of the solver's steps",
       .low = 1,
       .high = 1e6,
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().NumberOfIterations;
       }},
      {.name = "weights",
       .group = adjusting,
       .sentence = "weights of ground truth, roof, slope, bed and flat",
       .low = 1e-6,
       .high = 1e6,
       .entries = 5,
       .placeholder = "W,W,W,W,W",
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().CellSizeWeights;
       }},
      {.name = "lock",
       .group = adjusting,
       .sentence = "strips whose trajectory is held, by their places in the order of the paths, "
                   "from 0",
       .high = 1e9,
       .placeholder = "I,J",
       .example = "[0, 2]",
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.model.locked; }},
      {.name = "split-back-strips",
       .group = adjusting,
       .sentence = "every second strip gets spline sections",
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().SplitBackStrips;
       }},
      {.name = "hold",
       .group = adjusting,
       .sentence = "global corrections that are not estimated",
       .words = {"offsets", "scales", "misalignment", "lever-arm"},
       .placeholder = "BLOCK,BLOCK",
       .example = R"(["scales", "lever-arm"])",
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.model.held; }},
      {.name = "relative",
       .group = adjusting,
       .sentence = "ground truth may be missing or too little; what there is of it still counts",
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.model.isRelative; }},
      {.name = "reference",
       .group = adjusting,
       .sentence = "residuals one by one with automatic derivatives: slowly to the same result",
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.model.isReference; }}};
}

std::vector<Setting> ofWorking() {
  return {{.name = "threads",
           .group = working,
           .sentence = "threads that work at once; 0: as many as there are cores",
           .high = 4096,
           .place = [](FlightSettings& all) -> SettingPlace { return &all.threads; }},
          {.name = "repeatable",
           .group = working,
           .sentence = "the solver takes one thread, so that two runs give the same bytes",
           .steps = {Adjust},
           .place = [](FlightSettings& all) -> SettingPlace { return &all.repeatable; }},
          {.name = "memory",
           .group = working,
           .sentence = "memory that points are held in between the steps; 0: half of what is free",
           .unit = "GB",
           .high = 1e6,
           .place = [](FlightSettings& all) -> SettingPlace { return &all.memory; }},
          {.name = "force",
           .group = working,
           .sentence = "do also what an earlier run has done already",
           .use = SettingUse::Flag,
           .place = [](FlightSettings& all) -> SettingPlace { return &all.force; }}};
}

std::vector<Setting> ofHosts() {
  return {
      {.name = "GridName",
       .group = hosts,
       .sentence = "grid of the containers that points are read from",
       .use = SettingUse::Code,
       .steps = {Rasterize, Match, Adjust},
       .place = [](FlightSettings& all) -> SettingPlace { return &all.configuration().GridName; }},
      {.name = "InterpolationFlag",
       .group = hosts,
       .sentence = "last argument of the trajectory interpolation",
       .use = SettingUse::Code,
       .steps = {Match, Adjust},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().InterpolationFlag;
       }},
      {.name = "OverwriteToLinear",
       .group = hosts,
       .sentence = "strips that get linear sections whatever the model, with their lengths",
       .use = SettingUse::Code,
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().OverwriteToLinear;
       }},
      {.name = "OverwriteToSpline",
       .group = hosts,
       .sentence = "strips that get spline sections whatever the model, with their lengths",
       .use = SettingUse::Code,
       .steps = {Adjust},
       .place = [](FlightSettings& all) -> SettingPlace {
         return &all.configuration().OverwriteToSpline;
       }}};
}

}  // namespace

const std::vector<Setting>& settingsTable() {
  static const std::vector<Setting> table = [] {
    std::vector<Setting> all;
    for (const auto ofGroup : {filesAndChain, ofRasterizing, ofMatching, ofAdjusting,
                               knowledgeSettings, ofWorking, ofHosts}) {
      const auto settings = ofGroup();
      all.insert(all.end(), settings.begin(), settings.end());
    }
    return all;
  }();
  return table;
}

}  // namespace Velorn::Flights
