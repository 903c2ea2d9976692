// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Finds correspondences between rasterized strips, and between strips and ground truth.
//
//     const MatchReport report = match(configuration, files, options, nullptr, progress);
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "flight/surfaces/Solution.h"
#include "platform/kestrum/LoaderProgress.h"
#include <velorn/FileContainer.h>
#include <velorn/InputParameter.h>

namespace Velorn::Flights {

struct MatchOptions {
  std::size_t maxCorrespondences = 0;  ///< over all strips; 0: 10,000 per strip, as memory allows
  std::uint64_t seed = 1;              ///< of the thinning
  /// Both points are moved along their beams onto the planes through their own neighbourhoods.
  bool ontoPlanes = true;
  unsigned int neighbours = 16;  ///< of these planes, as rasterized
  double neighbourRadius = 5.0;  ///< [m]
  /// Strips that lie apart by many times the distance of their points: most nearest points are
  /// wrong, and the few walls must not be measured by the ground. The partner is the nearest point
  /// with a normal that agrees, several points may share it, and outliers are sought among
  /// correspondences of one direction, not of one class.
  bool areFarApart = false;
  /// Overlaps are grown by that, or by the search radius where that is more: strips may disagree by
  /// it as delivered, which is how overlaps are seen [m].
  double reach = 0.0;
};

/// Where the candidates of one class went.
struct Funnel {
  std::size_t candidates = 0;  ///< representatives within the other's bounding polygon
  std::size_t tooFar = 0;      ///< nothing of the class within the search radius
  std::size_t angle = 0;       ///< normals disagree
  std::size_t roughness = 0;   ///< one of the two neighbourhoods is no plane, or a rough one
  std::size_t outlier = 0;     ///< distance along the normal beyond median ± 3 NMAD
  std::size_t thinned = 0;     ///< given up for the sake of memory
  std::size_t kept = 0;
  double median = std::numeric_limits<double>::quiet_NaN();  ///< distance along the normal [m]
  double nmad = std::numeric_limits<double>::quiet_NaN();    ///< before the rejection [m]

  Funnel& operator+=(const Funnel& other);  ///< of the counts; median and NMAD become NaN
};

/// Two strips, or a strip and the ground truth, whose bounding polygons overlap.
struct PairReport {
  std::uint32_t i = 0, j = 0;  ///< file ids
  bool isGroundTruth = false;
  std::array<Funnel, 5> classes;  ///< ground truth, roof, slope, bed points, flat

  Funnel sum() const;
};

struct MatchReport {
  std::vector<PairReport> pairs;       ///< by i and j, the ground truth last
  double searchRadius = 0.0;           ///< of this round [m]
  std::size_t maxCorrespondences = 0;  ///< that were allowed
  std::size_t correspondences = 0;     ///< in all blocks
  std::size_t withGroundTruth = 0;     ///< of these
  /// Median of the distances of the strip pairs kept [m].
  double typicalDistance = std::numeric_limits<double>::quiet_NaN();
  /// Median of their absolute distances along the normal, as searched [m].
  double disagreement = std::numeric_limits<double>::quiet_NaN();
  /// Ground-truth correspondences on planes of more than 10°.
  std::size_t onInclinedGroundTruth = 0;
  std::size_t groundTruthPatches = 0;  ///< groups of ground-truth points that were matched
};

/// Reads rasters and strips, and writes a block for each pair with correspondences into the
/// correspondence folder of the configuration; the blocks of an earlier matching are removed. While
/// that is going on a file "unfinished" lies in the folder. Blocks hold the delivered positions
/// whatever the search starts from. The same for any number of threads.
/// @param configuration  checked; radius, angle, root and folders count
/// @param files          with the ground truth, which may be an empty container
/// @param solution       of the round before; none: as delivered
/// @throws Error, naming the file, for one that cannot be used or written
MatchReport match(const Velorn::InputParameter& configuration, const Velorn::FileContainer& files,
                  const MatchOptions& options, const Solution* solution,
                  Kestrum::LoaderProgress& progress);

/// Name of the file that marks a folder of correspondences as incomplete.
inline constexpr const char* unfinishedName = "unfinished";

}  // namespace Velorn::Flights
