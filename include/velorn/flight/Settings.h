// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a user chooses about a flight: the files, and how each step works.
//
//     Velorn::Flights::FlightSettings settings;
//     settings.strips = {"strips/*.kx"};
//     settings.trajectories = {"trajectory.kx"};
//     settings.groundTruth = "control.kx";
//     settings.configuration().RootPath = "run";
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <velorn/CeresOptimization.h>
#include <velorn/InputParameter.h>
#include <velorn/flight/Visibility.h>

namespace Velorn::Flights {

/// What a surface element is, beside what the configuration says.
struct RasterSettings {
  /// Points that a plane is fitted to, the point itself included.
  unsigned int neighbours = 16;
  /// So many where fewer do not tell the normal; none that is more than `neighbours`: all planes
  /// have as many.
  unsigned int mostNeighbours = 256;
  double neighbourRadius = 5.0;  ///< they lie within [m]
  double maxRoughness = 0.05;    ///< of a planar neighbourhood, however rough those about it [m]
  double slopeLimit = 3.0;       ///< ground steeper than that is a slope [degree]
};

/// How correspondences are found, beside what the configuration says.
struct MatchSettings {
  std::size_t maxCorrespondences = 0;  ///< over all strips; 0: 10,000 per strip
  std::uint64_t seed = 1;              ///< of the thinning
  /// Both points are moved along their beams onto the planes through their own neighbourhoods.
  bool ontoPlanes = true;
};

/// What is known before the adjustment; see Velorn::APrioriKnowledge.
struct PriorSettings {
  /// Otherwise the adjustment is a free one, with weights by class, and nothing below counts.
  bool isUsed = false;
  std::string instrument = "unknown";     ///< class of the trajectory, for the zeros below
  std::vector<double> position{0, 0, 0};  ///< σ east, north, height [m]; zeros: of the class
  std::vector<double> attitude{0, 0, 0};  ///< σ of roll, pitch, yaw [degree]; zeros: of the class
  double positionTime =
      Velorn::APrioriKnowledge().positionTime;  ///< correlation time of the position [s]
  double attitudeTime =
      Velorn::APrioriKnowledge().attitudeTime;  ///< correlation time of the attitude [s]
  double control = 0.02;                        ///< σ of the ground truth [m]
  double misalignment = 0.5;                    ///< σ [degree]
  double leverArm = 0.02;                       ///< σ [m]
  double rangeOffset = 0.05;                    ///< σ [m]
  double angleOffset = 0.02;                    ///< σ [degree]
  double rangeScale = 100.0;                    ///< σ [ppm]
  double angleScale = 500.0;                    ///< σ [ppm]
};

/// What is estimated, and how.
struct ModelSettings {
  /// With the weight 3 of the ground truth: at 1 the noise of many pairs shrinks a block whose
  /// sections are free, at 10 the ground truth bends it.
  ModelSettings() { configuration.CellSizeWeights = {3, 1, 1, 1, 1}; }

  /// All that the library of the adjustment knows; its lists of files, locked strips and intervals
  /// follow from the other settings.
  Velorn::InputParameter configuration;
  /// Longest section [s]; 0: what is known before bounds the freedom of short ones, so that they
  /// have 10 s; without it each strip is one.
  double interval = 0.0;
  std::vector<int> locked;        ///< places of strips whose trajectory is held, from 0
  std::vector<std::string> held;  ///< "offsets", "scales", "misalignment", "lever-arm"
  bool isRelative = false;        ///< ground truth may be missing, or too little
  bool isReference = false;       ///< see Evaluation; otherwise the engine evaluates
  PriorSettings prior;
};

/// Zero as smallest cell, search radius, radius of the neighbours or largest roughness, as it
/// comes, stands for what follows from the points, which a run measures at its begin.
struct FlightSettings {
  FlightSettings() {
    configuration().MinCellSize = configuration().SearchRadius = 0.0;
    raster.neighbourRadius = raster.maxRoughness = 0.0;
  }

  std::vector<std::string> strips;        ///< containers; * and ? stand for any letters, any letter
  std::vector<std::string> trajectories;  ///< containers; the same
  std::string groundTruth;                ///< container; empty: none

  /// Runs of several settings, side by side: each has the folder of its name below the root folder,
  /// and what they rasterize alike is there once. Empty: the root folder itself.
  std::string variant;

  ModelSettings model;
  std::vector<std::string> steps{"+rasterize", "+correspondences", "+optimization", "+adjustment"};
  int coarseRounds = -1;     ///< that come first, each finer; -1: by how far the strips lie apart
  unsigned int rounds = 10;  ///< of matching and adjusting after them, at most
  RasterSettings raster;
  MatchSettings match;
  bool stability = true;     ///< the result is held against others from starts beside it
  bool compress = false;     ///< what is newly written into adjusted strips
  bool force = false;        ///< steps that are done already are done again
  unsigned int threads = 0;  ///< of all work; 0: as many as there are cores
  bool repeatable = false;   ///< the solver takes one thread: the same bytes for any `threads`
  double memory = 0.0;  ///< [GB] that points are held in between steps; 0: half of what is free

  Velorn::InputParameter& configuration() { return model.configuration; }
  const Velorn::InputParameter& configuration() const { return model.configuration; }
};

/// Expands patterns, derives what follows from other values, and refuses what is impossible, before
/// any work: values, words, files that are missing or named twice. Strips are sorted, as their file
/// ids are. `Flight` does it by itself.
/// @throws Error that names the setting or the file
VELORN_FLIGHT_EXPORT void complete(FlightSettings& settings);

/// Puts the choices where the library reads them.
/// @param strips  number of strips
/// @throws Error for a locked strip that is not there, and for a word of `held` that is none
VELORN_FLIGHT_EXPORT void complete(ModelSettings& model, std::size_t strips);

/// In the units of the library. Nothing is said there of what was delivered.
VELORN_FLIGHT_EXPORT Velorn::APrioriKnowledge knowledgeOf(const PriorSettings& prior);

/// Which global corrections `held` leaves free, and how much ground truth is needed.
VELORN_FLIGHT_EXPORT Velorn::AdjustmentSettings solverSettingsOf(const ModelSettings& model);

}  // namespace Velorn::Flights
