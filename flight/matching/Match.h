// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Finds correspondences between rasterized strips, and between strips and ground truth.
//
//     const MatchReport report = match(configuration, surfaces, options, nullptr, progress);
#pragma once

#include <functional>
#include <vector>

#include "flight/matching/Correspondence.h"
#include "flight/surfaces/Solution.h"
#include "flight/surfaces/SurfaceStore.h"
#include "platform/kestrum/LoaderProgress.h"
#include <velorn/InputParameter.h>
#include <velorn/flight/Reports.h>
#include <velorn/flight/Settings.h>

namespace Velorn::Flights {

/// How a matching works.
struct MatchOptions : MatchSettings {
  unsigned int neighbours = 16;  ///< of these planes, as rasterized
  double neighbourRadius = 5.0;  ///< [m]
  /// Strips that lie apart by many times the distance of their points: most nearest points are
  /// wrong, and the few walls must not be measured by the ground. The partner is the nearest point
  /// with a normal that agrees, several points may share it, and outliers are sought among
  /// correspondences of one direction, not of one class.
  bool areFarApart = false;
  /// Only one of so many squares of 20 m by 20 m is searched, ground truth apart: a part stands for
  /// a large flight.
  unsigned int oneSquareOf = 1;
  /// Overlaps are grown by that, or by the search radius where that is more: strips may disagree by
  /// it as delivered, which is how overlaps are seen [m].
  double reach = 0.0;
  /// Ground truth is searched within that, or the search radius where that is more: what a round
  /// searches less far must not make control disappear [m].
  double controlReach = 0.0;
  /// Patches of the ground truth far off the model that the search starts from count less.
  bool weighsControl = false;
  unsigned int mostNeighbours = 0;  ///< of planes that fewer do not tell the normal of
  double roughest = 0.05;           ///< of planes that grow [m]
};

class GroundTruth;

/// Two strips, or a strip and the ground truth, and what became of all candidates.
struct MatchedPair {
  std::uint32_t i, j;            ///< file ids
  const SurfaceStore& surfaces;  ///< that the points are of
  const MatchPoints& pointsOfI;  ///< that the numbers i of the candidates count
  const MatchPoints* pointsOfJ;  ///< null: partners are points of the ground truth
  const GroundTruth& groundTruth;
  std::vector<JudgedCandidate> candidates{};  ///< by their numbers i

  bool isWithGroundTruth() const { return !pointsOfJ; }
};

/// Is shown each pair when it is done.
using PairObserver = std::function<void(const MatchedPair&)>;

/// Writes a block for each pair with correspondences into the
/// correspondence folder of the configuration; the blocks of an earlier matching are removed. While
/// that is going on a file "unfinished" lies in the folder. Blocks hold the delivered positions
/// whatever the search starts from. The same for any number of threads.
/// @param configuration  checked; radius, angle, root and folder of the blocks count
/// @param surfaces       with the raster of the ground truth, which may be an empty container
/// @param solution       of the round before; none: as delivered
/// @param observe        none: nobody looks, and no candidate is remembered
/// @throws Error, naming the file, for one that cannot be used or written
MatchReport match(const Velorn::InputParameter& configuration, SurfaceStore& surfaces,
                  const MatchOptions& options, const Solution* solution,
                  Kestrum::LoaderProgress& progress, const PairObserver& observe = {});

/// Name of the file that marks a folder of correspondences as incomplete.
inline constexpr const char* unfinishedName = "unfinished";

}  // namespace Velorn::Flights
