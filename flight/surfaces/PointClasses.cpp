// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/PointClasses.h"

#include <cmath>
#include <numbers>

#include "flight/strips/Median.h"
#include "flight/surfaces/RoughnessLimit.h"
#include "flight/surfaces/TerrainClasses.h"

namespace Velorn::Flights {
namespace {

class Classifier {
 public:
  Classifier(const PointsToClassify& points, const RasterSettings& options)
      : points_(points),
        limit_(static_cast<float>(options.maxRoughness)),
        steepest_(std::cos(options.slopeLimit * std::numbers::pi / 180.0)) {
    for (std::size_t i = 0; i < points_.places.size(); ++i) {
      if (isLast(i)) limit_.add(points_.places[i], points_.surface.roughness[i]);
    }
    limit_.settle();
    if (points_.given) return;
    for (std::size_t i = 0; i < points_.places.size(); ++i) {
      if (isPlanar(i) && kind(i) != SurfaceKind::none) ground_.add(points_.places[i]);
    }
  }

  bool isPlanar(std::size_t i) const {
    return isLast(i) && points_.surface.roughness[i] <= limit_.at(points_.places[i]);
  }

  /// Whether the classes alone say that a point is never matched.
  bool isExcluded(std::size_t i) const {
    return points_.given ? !isSurface((*points_.given)[i]) : kind(i) == SurfaceKind::none;
  }

  /// Of a planar point that is not excluded.
  std::uint8_t code(std::size_t i) const {
    if (points_.given) return (*points_.given)[i];
    return terrainClass(kind(i), points_.places[i], points_.surface.normals[i], ground_, steepest_);
  }

 private:
  bool isLast(std::size_t i) const { return points_.clouds[i] == Cloud::last; }
  SurfaceKind kind(std::size_t i) const { return kindOf(points_.lasClasses[i]); }

  const PointsToClassify& points_;
  RoughnessLimit limit_;
  double steepest_;
  LowestGround ground_;
};

}  // namespace

std::vector<std::uint8_t> classCodes(const PointsToClassify& points, const RasterSettings& options,
                                     RasterCounts& counts) {
  const Classifier classifier(points, options);
  std::vector<std::uint8_t> codes(points.places.size(), noTerrain);
  std::vector<float> roughness;
  counts.points = codes.size();
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (points.clouds[i] == Cloud::leftOut) {
      ++counts.notFinite;
    } else if (points.clouds[i] == Cloud::notLast) {
      ++counts.notLast;
    } else if (classifier.isExcluded(i)) {
      ++counts.notTerrain;
    } else if (!classifier.isPlanar(i)) {
      ++counts.notPlanar;
    } else {
      codes[i] = classifier.code(i);
      roughness.push_back(points.surface.roughness[i]);
    }
  }
  if (!roughness.empty()) {
    counts.medianRoughness = static_cast<double>(upperMedianOf(std::move(roughness)));
  }
  return codes;
}

}  // namespace Velorn::Flights
